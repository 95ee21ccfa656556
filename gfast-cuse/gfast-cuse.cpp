// A virtual board as character devices of the kernel, for every program on the machine.
#include <fcntl.h>
#include <qvr/version.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "device-files/device_names.h"
#include "gfast-cuse/cuse/cuse_device.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/description/board_file.h"

using namespace gfast;
using namespace gfast::board;
using namespace gfast::cuse;

namespace {

constexpr int kUsageError = 2;
constexpr const char* kChannel = "/dev/cuse";

constexpr const char* kDescription =
    "Makes the device files /dev/gfdfe0 and /dev/gfdfe1 with a virtual board behind them, for as long as it "
    "runs.\n"
    "\n"
    "It needs a Linux with character devices in user space (CONFIG_CUSE) and the right to open /dev/cuse. "
    "The\n"
    "board is the one of gfast-lab, and so are the board file and the request trace.";

constexpr const char* kFooter =
    "A mistake on the command line or in the board file, and a machine that cannot do it, are one line on "
    "standard\n"
    "error and exit status 2.";

struct Options {
  std::string board;
  std::string trace;
};

// The exit status that the command line alone decides: of --help or of a mistake.
std::optional<int> parseOptions(int argc, char* argv[], Options& options) {
  CLI::App app(kDescription, "gfast-cuse");
  app.footer(kFooter);
  app.set_version_flag("--version", "gfast-cuse " QVR_VERSION, "Print the version and end");
  app.add_option("--board", options.board, "Board file (TOML) that describes the board; docs/board-files.md")
      ->type_name("FILE");
  app.add_option("--trace-requests", options.trace,
                 "Write one line a driver request to this file; gfast-lab --help explains it")
      ->type_name("FILE");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "gfast-cuse: %s (--help explains)\n", error.what());
    return kUsageError;
  }
  return std::nullopt;
}

int fail(const std::string& what, const char* why) {
  std::fprintf(stderr, "gfast-cuse: %s: %s\n", what.c_str(), why);
  return kUsageError;
}

int run(const Options& options) {
  VirtualBoard board(options.board.empty() ? BoardConfig() : readBoardFile(options.board));
  if (const int error = options.trace.empty() ? 0 : board.traceRequests(options.trace); error != 0) {
    return fail(options.trace, std::strerror(error));
  }
  std::array<std::unique_ptr<CuseDevice>, device_files::kDevices> devices;
  for (size_t i = 0; i < devices.size(); i++) {
    const int channel = ::open(kChannel, O_RDWR | O_CLOEXEC);
    if (channel < 0) {
      return fail(kChannel, std::strerror(errno));
    }
    devices[i] = std::make_unique<CuseDevice>(board, static_cast<int>(i), channel);
    if (const std::string problem = devices[i]->introduce(); !problem.empty()) {
      return fail(kChannel, problem.c_str());
    }
  }
  std::array<std::thread, devices.size()> threads;
  for (size_t i = 0; i < devices.size(); i++) {
    threads[i] = std::thread([&device = *devices[i]] { device.serve(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return 0;
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
    std::fprintf(stderr, "gfast-cuse: %s\n", error.what());
  }
  return kUsageError;
}
