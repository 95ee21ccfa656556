// How long a command of a script takes, beside libcli's own way to run a file of commands that do nothing.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "row.h"
#include "support/board_texts.h"
#include "support/console_session.h"
#include "support/temporary_folder.h"

namespace {

using Command = std::vector<std::string>;
using Microseconds = std::chrono::duration<double, std::micro>;
using std::chrono::steady_clock;

constexpr int kCommands = 20000;
constexpr int kTimes = 7;

std::string script(const std::string& line, int times) {
  std::string text;
  for (int i = 0; i < times; i++) {
    text += line + "\n";
  }
  return text;
}

double runTime_us(const Command& command) {
  const auto start = steady_clock::now();
  ConsoleProgram program("", command);
  if (program.wait() != 0) {
    std::fprintf(stderr, "script-bench: %s", program.errors().c_str());
    std::exit(EXIT_FAILURE);
  }
  return Microseconds(steady_clock::now() - start).count();
}

double medianRunTime_us(const Command& command) {
  std::vector<double> all_us;
  for (int i = 0; i < kTimes; i++) {
    all_us.push_back(runTime_us(command));
  }
  return medianOf(all_us);
}

// Without the program's start and end.
double commandTime_us(const TemporaryFolder& folder, Command program, const std::string& line) {
  program.push_back(folder.write("script.txt", script(line, kCommands)));
  const double all_us = medianRunTime_us(program);
  program.back() = folder.write("script.txt", "");
  return (all_us - medianRunTime_us(program)) / kCommands;
}

}  // namespace

int main() {
  const TemporaryFolder folder;
  const double plain_us = commandTime_us(folder, {PLAIN_SERVER, "--script"}, "nothing");
  const Command lab{GFAST_LAB, "--board", folder.write("board.toml", boardWithLines("showtime"))};
  printRow("script, show number lines", commandTime_us(folder, lab, "show number lines"), plain_us,
           "us/command", "< 100 us");
}
