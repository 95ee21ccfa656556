// The programs that the tests run.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "support/board_texts.h"
#include "support/console_session.h"
#include "support/temporary_folder.h"

// What `show version` answers.
inline constexpr const char* kVersion = "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $\r\n";

// gfast-lab, or the program that the environment puts in its place.
inline std::string gfastLab() {
  const char* const other = std::getenv("GFAST_LAB");
  return other != nullptr ? other : GFAST_LAB;
}

// The end of a console that a signal kills, as ConsoleProgram has it; gfast-desk tells it as a shell does.
inline int killedBy(int signal) {
  return std::getenv("GFAST_LAB") != nullptr ? 128 + signal : -signal;
}

// A board whose lines are up from the start, so that no event is printed during a test.
inline const std::string& quietBoard() {
  static const TemporaryFolder folder;
  static const std::string file = folder.write("quiet.toml", boardWithLines("showtime"));
  return file;
}

// gfast-lab with these arguments, on the quiet board.
inline ConsoleProgram lab(std::vector<std::string> arguments, const std::string& directory = ".") {
  arguments.insert(arguments.begin(), {gfastLab(), "--board", quietBoard()});
  return ConsoleProgram(LAUNCHER, arguments, directory);
}

// gfast-lab serving sessions on a port of its own.
class LabServer {
 public:
  explicit LabServer(const std::string& directory = ".") : program_(lab({"--port", "0"}, directory)) {}

  ConsoleProgram& program() { return program_; }
  uint16_t port() { return program_.port(); }

 private:
  ConsoleProgram program_;
};

// A session at its first prompt.
class OpenSession : public ConsoleSession {
 public:
  explicit OpenSession(uint16_t port) : ConsoleSession(port) { awaitPrompt(); }
};
