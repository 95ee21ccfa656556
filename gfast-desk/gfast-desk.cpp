// Runs any program with a virtual board behind its device files.
#include <qvr/version.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gfast-desk/desk/desk.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/description/board_file.h"

using namespace gfast;
using namespace gfast::board;
using namespace gfast::desk;

namespace {

constexpr int kUsageError = 2;

constexpr const char* kDescription =
    "Runs PROGRAM with a virtual board behind /dev/gfdfe0, /dev/gfdfe1 and /proc/gfast/rediscover.\n"
    "\n"
    "PROGRAM is not changed, and neither is the machine: what PROGRAM and the programs that it starts ask "
    "of\n"
    "these files is answered here, everything else by the system. The board is the one of gfast-lab, and so "
    "are\n"
    "the board file and the request trace.";

constexpr const char* kFooter =
    "Exit status: PROGRAM's; 128 and the signal's number when a signal killed it; 126 or 127 when it cannot "
    "be\n"
    "started. A mistake on the command line or in the board file, a machine that cannot do it and a program "
    "for\n"
    "another processor are one line on standard error and exit status 2.";

struct Options {
  std::string board;
  std::string trace;
  std::vector<std::string> command;
};

// The exit status that the command line alone decides: of --help or of a mistake.
std::optional<int> parseOptions(int argc, char* argv[], Options& options) {
  // What follows the dashes is the program's and not looked at.
  char** const end = argv + argc;
  char** const dashes = std::find(argv, end, std::string_view("--"));
  CLI::App app(kDescription, "gfast-desk");
  app.footer(kFooter);
  app.set_version_flag("--version", "gfast-desk " QVR_VERSION, "Print the version and end");
  app.add_option("--board", options.board, "Board file (TOML) that describes the board; docs/board-files.md")
      ->type_name("FILE");
  app.add_option("--trace-requests", options.trace,
                 "Write one line a driver request to this file; gfast-lab --help explains it")
      ->type_name("FILE");
  app.add_option("PROGRAM", options.command,
                 "Program to run and its arguments; behind -- they may look like options")
      ->type_name("");
  try {
    app.parse(static_cast<int>(dashes - argv), argv);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "gfast-desk: %s (--help explains)\n", error.what());
    return kUsageError;
  }
  options.command.insert(options.command.end(), std::min(dashes + 1, end), end);
  if (options.command.empty()) {
    std::fprintf(stderr, "gfast-desk: PROGRAM is missing (--help explains)\n");
    return kUsageError;
  }
  return std::nullopt;
}

int run(const Options& options) {
  const BoardConfig config = options.board.empty() ? BoardConfig() : readBoardFile(options.board);
  Desk desk(options.command);
  VirtualBoard board(config);
  if (const int error = options.trace.empty() ? 0 : board.traceRequests(options.trace); error != 0) {
    std::fprintf(stderr, "gfast-desk: %s: %s\n", options.trace.c_str(), std::strerror(error));
    return kUsageError;
  }
  return desk.run(board);
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
    std::fprintf(stderr, "gfast-desk: %s\n", error.what());
  }
  return kUsageError;
}
