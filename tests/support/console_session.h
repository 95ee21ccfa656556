// Types at the real program: starts it, reads what it prints, opens sessions to it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The longest time that a test waits for anything.
constexpr auto kPatience = std::chrono::seconds(60);

// One running program. Killed when it goes out of scope.
class ConsoleProgram {
 public:
  // The program and its arguments; a launcher, blank-separated, may come before it (an emulator).
  ConsoleProgram(const std::string& launcher, const std::vector<std::string>& command,
                 const std::string& directory = ".");
  ~ConsoleProgram();
  ConsoleProgram(const ConsoleProgram&) = delete;
  ConsoleProgram& operator=(const ConsoleProgram&) = delete;

  pid_t pid() const { return pid_; }

  // The port it says it listens on, waiting until it does.
  uint16_t port();

  // Everything on standard output so far. Reads until the text has come `times` times, at most for kPatience.
  const std::string& awaitOutput(std::string_view text, int times = 1);

  // Reads what is there now without waiting.
  const std::string& output();

  // Waits for the end: the exit status, or minus the signal that ended it. What it printed is then complete.
  int wait();

  const std::string& errors() const { return errors_; }
  bool running();

 private:
  bool readSome(std::chrono::milliseconds patience);

  pid_t pid_ = -1;
  int outputPipe_ = -1;
  int errorPipe_ = -1;
  std::string output_;
  std::string errors_;
};

// A telnet client. It leaves telnet commands out of what it returns.
class ConsoleSession {
 public:
  // From an address of this machine; 0: any.
  explicit ConsoleSession(uint16_t port, uint32_t from = 0);
  ~ConsoleSession();
  ConsoleSession(const ConsoleSession&) = delete;
  ConsoleSession& operator=(const ConsoleSession&) = delete;

  int socket() const { return socket_; }

  void send(std::string_view bytes);

  // Reads up to and including the text, at most until the connection ends or kPatience is over.
  std::string readUntil(std::string_view text);

  // Reads to the end of the connection.
  std::string readToEnd();

  // What comes within the time, possibly nothing.
  std::string readFor(std::chrono::milliseconds time);

  // Reads the banner and the first prompt.
  void awaitPrompt();

  // Types a line and returns what it printed, every line with its "\r\n", without echo and prompt.
  std::string type(std::string_view line);

  // Types keys that are answered without a line end, such as '?' or TAB, and returns everything up to the
  // prompt.
  std::string typeKeys(std::string_view keys);

  // Ends the connection with a reset.
  void reset();
  void close();
  void endInput();

 private:
  bool receiveSome(std::chrono::milliseconds patience);

  int socket_ = -1;
  bool ended_ = false;
  int telnet_ = 0;  // bytes of a telnet command still to skip
  std::string received_;
};

constexpr std::string_view kPrompt = "\r\n(gfast-cli)> ";
constexpr std::string_view kConfigPrompt = "\r\n(gfast-cli)(config)> ";
