// The console in front of a virtual board: gfast-cli without chips.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "driver/driver.h"
#include "qvrcli/session/server.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/description/board_file.h"

using namespace gfast;
using namespace gfast::board;
using namespace gfast::console;

namespace {

constexpr int kUsageError = 2;

constexpr const char* kDescription =
    "The G.fast console in front of a virtual board.\n"
    "\n"
    "The board is two modem chips made of software: device 0 the network side, device 1 the subscriber "
    "side,\n"
    "joined by 100 m of CAD55 cable. Their memory, registers, flash, events and far ends answer as a real\n"
    "board's do; the line trains by itself within seconds. A board file describes another board.\n"
    "\n"
    "With SCRIPT, runs the commands in that file and ends. Without, serves one console session after the "
    "other;\n"
    "reach it with: telnet localhost 9000";

constexpr const char* kFooter =
    "Request trace, one line each, blanks between the fields:\n"
    "  seconds since start   0.000000 is the moment the board was switched on\n"
    "  device                0 or 1\n"
    "  request               open memread memwrite activate imgdnld flasherase flashprog flashread logcfg "
    "logread\n"
    "                        eventread farend, or unknown\n"
    "  address or line       0x and eight digits; of farend the line's number; - of requests without\n"
    "  length                bytes asked for, sent, or (logread, eventread) received; of imgdnld and "
    "flashprog\n"
    "                        the file's\n"
    "  result                ok, or the name of the error\n"
    "\n"
    "A mistake on the command line or in the board file is one line on standard error and exit status 2.";

struct Options {
  std::string board;
  uint16_t port = kConsolePort;
  std::string trace;
  std::string script;
};

// Returns the exit status of --help or of a mistake; empty when the program goes on.
std::optional<int> parseOptions(int argc, char* argv[], Options& options) {
  CLI::App app(kDescription, "gfast-lab");
  app.footer(kFooter);
  app.add_option("--board", options.board, "Board file (TOML) that describes the board; docs/board-files.md")
      ->type_name("FILE");
  app.add_option("--port", options.port, "TCP port of the console; 0 takes any free one")
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--trace-requests", options.trace, "Write one line a driver request to this file")
      ->type_name("FILE");
  app.add_option("SCRIPT", options.script, "File of commands to run instead of serving sessions")
      ->type_name("");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "gfast-lab: %s (--help explains)\n", error.what());
    return kUsageError;
  }
  return std::nullopt;
}

int run(const Options& options) {
  const BoardConfig config = options.board.empty() ? BoardConfig() : readBoardFile(options.board);
  // Never deleted: the notification thread uses it until the process ends.
  auto* board = new VirtualBoard(config);
  if (const int error = options.trace.empty() ? 0 : board->traceRequests(options.trace); error != 0) {
    std::fprintf(stderr, "gfast-lab: %s: %s\n", options.trace.c_str(), std::strerror(error));
    return kUsageError;
  }
  installDriver(*board);
  return runConsole(options.script.empty() ? nullptr : options.script.c_str(), options.port);
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    Options options;
    const auto status = parseOptions(argc, argv, options);
    return status ? *status : run(options);
  } catch (const BoardFileError& error) {
    std::fprintf(stderr, "%s\n", error.what());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gfast-lab: %s\n", error.what());
  }
  return kUsageError;
}
