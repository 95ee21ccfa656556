// The console in front of a virtual board: gfast-cli without chips.
#include <qvr/version.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "clock/clock.h"
#include "driver/driver.h"
#include "driver/recording_driver.h"
#include "gfast-lab/replay/blanked_trace.h"
#include "gfast-lab/replay/replay_clock.h"
#include "gfast-lab/replay/replayed_board.h"
#include "gfast-lab/replay/trace_reader.h"
#include "gfast-lab/time/event_clock.h"
#include "gfast-lab/time/fast_clock.h"
#include "gfast-lab/time/time_options.h"
#include "qvrcli/run_console.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/description/board_file.h"

using namespace gfast;
using namespace gfast::board;
using namespace gfast::console;
using namespace gfast::lab;
using namespace gfast::replay;

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
    "With --speed max, time stands still while commands are worked on and passes at once where one waits "
    "(sleep):\n"
    "a script prints the same each time, whatever the computer. It then starts at 2024-01-01T00:00:00.\n"
    "\n"
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
    "A mistake on the command line, in the board file or in the field trace is one line on standard error "
    "and exit status 2.";

struct Options {
  std::string board;
  uint16_t port = kConsolePort;
  std::string trace;
  std::string speed;
  std::string start;
  std::string replayed;
  std::string blanked;
  std::string script;
  std::string http;
};

std::string speedCheck(const std::string& text) {
  return parseSpeed(text) ? "" : "must be a number from 0.01 to 100000, or max";
}

std::string startCheck(const std::string& text) {
  return parseStart(text) ? "" : "must be a local time such as 2024-05-02T18:30:00";
}

// Returns the exit status of --help or of a mistake; empty when the program goes on.
std::optional<int> parseOptions(int argc, char* argv[], Options& options) {
  CLI::App app(kDescription, "gfast-lab");
  app.footer(kFooter);
  app.set_version_flag("--version", "gfast-lab " QVR_VERSION, "Print the version and end");
  app.add_option("--board", options.board, "Board file (TOML) that describes the board; docs/board-files.md")
      ->type_name("FILE");
  app.add_option("--port", options.port, "TCP port of the console; 0 takes any free one")
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--trace-requests", options.trace, "Write one line a driver request to this file")
      ->type_name("FILE");
  app.add_option("--speed", options.speed,
                 "Seconds of the board in a second, 0.01 to 100000, or max: no waiting at all")
      ->type_name("N")
      ->check(speedCheck);
  app.add_option("--start", options.start,
                 "The local time at which the board is switched on, such as 2024-05-02T18:30:00")
      ->type_name("TIME")
      ->check(startCheck);
  CLI::Option* const replayed =
      app.add_option("--replay", options.replayed,
                     "Answer from this field trace instead of a virtual board; docs/field-traces.md")
          ->type_name("FILE")
          ->excludes("--board", "--trace-requests", "--speed", "--start");
  app.add_option(
         "--blank-into", options.blanked,
         "Write the replayed trace, its MAC addresses and serial numbers blanked, into this file and end")
      ->type_name("FILE")
      ->needs(replayed);
  app.add_option(
         "--http", options.http,
         "Let others read the lines at this address and port (0: any free one); docs/seeing-a-line.md")
      ->type_name("[ADDRESS:]PORT");
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

int fail(const std::string& file, int error) {
  std::fprintf(stderr, "gfast-lab: %s: %s\n", file.c_str(), std::strerror(error));
  return kUsageError;
}

int runConsoleBefore(Driver& board, const Options& options) {
  installDriver(recordedIfAsked(board));
  return runConsole(options.script.empty() ? nullptr : options.script.c_str(), options.port,
                    options.http.empty() ? nullptr : options.http.c_str());
}

// What serves the console is never deleted: the notification thread uses it until the process ends.

VirtualBoard* boardInEvents(const BoardConfig& config, time_t start) {
  auto* clock = new EventClock(start);
  auto* board = new VirtualBoard(config, [clock] { return clock->elapsed_s(); });
  clock->setEvents({[board] { return board->nextDue(); }, [board] { board->advance(); }});
  installClock(*clock);
  return board;
}

VirtualBoard* boardInRunningTime(const BoardConfig& config, time_t start, double speed) {
  auto* clock = new FastClock(start, speed, clockSource());
  installClock(*clock);
  return new VirtualBoard(config, VirtualBoard::RunningTime{[clock] { return clock->elapsed_s(); }, speed});
}

// Installs the clock that the options ask for, and switches the board on.
VirtualBoard* switchOn(const BoardConfig& config, const Options& options) {
  constexpr const char* always = "2024-01-01T00:00:00";
  const double speed = parseSpeed(options.speed).value_or(1);
  const auto start = parseStart(options.start);
  if (speed == kNextEventAtOnce) {
    return boardInEvents(config, start ? *start : parseStart(always).value_or(0));
  }
  if (options.speed.empty() && !start) {
    return new VirtualBoard(config);
  }
  return boardInRunningTime(config, start ? *start : clockSource().now(), speed);
}

int runOnVirtualBoard(const Options& options) {
  auto* board = switchOn(options.board.empty() ? BoardConfig() : readBoardFile(options.board), options);
  if (const int error = options.trace.empty() ? 0 : board->traceRequests(options.trace); error != 0) {
    return fail(options.trace, error);
  }
  return runConsoleBefore(*board, options);
}

int runOnReplay(const Options& options) {
  FieldTrace trace = readTrace(options.replayed);
  if (trace.cut) {
    std::fprintf(stderr, "%s: the last exchange is not whole and is left out\n", options.replayed.c_str());
  }
  if (!options.blanked.empty()) {
    const int error = writeBlanked(std::move(trace), options.blanked);
    return error == 0 ? 0 : fail(options.blanked, error);
  }
  const auto started_us = trace.started_us;
  const auto report = [file = options.replayed](const std::string& line) {
    std::fprintf(stderr, "%s: %s\n", file.c_str(), line.c_str());
  };
  // A script is to print the same on every machine, so time does not pass while it computes.
  const auto time = options.script.empty() ? ReplayedBoard::TimeSource() : [] { return uint64_t{0}; };
  auto* board = new ReplayedBoard(std::move(trace), report, time);
  if (started_us) {
    installClock(*new ReplayClock(*board, *started_us, clockSource()));
  }
  return runConsoleBefore(*board, options);
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    Options options;
    const auto status = parseOptions(argc, argv, options);
    if (status) {
      return *status;
    }
    return options.replayed.empty() ? runOnVirtualBoard(options) : runOnReplay(options);
  } catch (const BoardFileError& error) {
    std::fprintf(stderr, "%s\n", error.what());
  } catch (const TraceError& error) {
    std::fprintf(stderr, "%s\n", error.what());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gfast-lab: %s\n", error.what());
  }
  return kUsageError;
}
