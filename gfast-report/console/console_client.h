// A telnet session with a console, typed by a program: one command, one reply.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace gfast::report {

// Takes telnet's commands out of a stream of bytes, whatever pieces it comes in.
class TelnetFilter {
 public:
  void add(std::string_view bytes, std::string& text);

 private:
  enum class State { kText, kCommand, kOption, kSubnegotiation, kSubnegotiationCommand };
  State state_ = State::kText;
};

class ConsoleClient {
 public:
  struct Address {
    std::string host;
    std::string port;
  };
  struct Limits {
    std::chrono::milliseconds busy{60000};    // how long to wait while another session has the console
    std::chrono::milliseconds silent{30000};  // how long a command may print nothing
  };
  using Tell = std::function<void(const std::string& line)>;

  // Connects with the first command. `tell` takes a line about what it waits for.
  ConsoleClient(Address address, Limits limits, Tell tell);
  ~ConsoleClient();  // ends the session as a user does
  ConsoleClient(const ConsoleClient&) = delete;
  ConsoleClient& operator=(const ConsoleClient&) = delete;

  // Returns what the command prints, without its echo and the prompt. A session that is lost is begun anew,
  // and the command typed again; a ReportError when that does not help.
  std::string ask(const std::string& command);

 private:
  enum class Received { kSome, kNothing, kEnd };

  void connect();
  void awaitFirstPrompt();
  bool typeAndRead(const std::string& command);  // false: the session is lost
  bool awaitPrompt();
  void quit();
  Received receive(std::chrono::milliseconds patience);
  void disconnect();
  bool hasPrompt() const;

  const Address address_;
  const Limits limits_;
  const Tell tell_;
  int socket_ = -1;
  TelnetFilter filter_;
  std::string received_;
};

}  // namespace gfast::report
