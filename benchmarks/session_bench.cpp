// How long an operator waits: commands of 2048 rows over a loopback session, the way to "Listening on port",
// and memory at the prompt; each compared with the smallest libcli server.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "support/board_texts.h"
#include "support/console_session.h"
#include "support/temporary_folder.h"

namespace {

using Command = std::vector<std::string>;
using Seconds = std::chrono::duration<double>;
using std::chrono::steady_clock;

// Commands of 2048 rows: memory in words of 4 bytes, and the tables by subcarrier, at the near end and the
// far end.
constexpr const char* kRowsCommands[] = {"read memory 0 d0000000 8192",
                                         "show BITSps 0 ds",
                                         "show BITS-RMCps 0 ds",
                                         "show SNRps 0 us",
                                         "show SNRps 0 ds",
                                         "show ALNps 0 us",
                                         "show ALNps 0 ds",
                                         "show HLOGps 0 us",
                                         "show HLOGps 0 ds",
                                         "show phy info 0 ne",
                                         "show phy info 0 fe"};

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// What one server measured; the ratios are printed at the end.
struct Measured {
  std::vector<double> start_s;
  long resident_kib = 0;
};

Measured product;
Measured yardstick;

Command productCommand() {
  return {GFAST_LAB, "--port", "0"};
}

// With lines that are up from the start.
Command showtimeCommand() {
  static const TemporaryFolder folder;
  static const std::string board = folder.write("board.toml", boardWithLines("showtime"));
  return {GFAST_LAB, "--board", board, "--port", "0"};
}

// The rows of one command, which both servers print.
class Rows {
 public:
  explicit Rows(const char* command) : command_(command) {
    ConsoleProgram lab("", showtimeCommand());
    ConsoleSession session(lab.port());
    session.awaitPrompt();
    text_ = session.type(command_);
    std::string lines = text_;
    std::erase(lines, '\r');
    file_ = folder_.write("rows.txt", lines);
  }

  void typeAtConsole(benchmark::State& state) { type(state, showtimeCommand(), command_, console_s_); }
  void typeAtPlainServer(benchmark::State& state) { type(state, {PLAIN_SERVER, file_}, "rows", plain_s_); }

  void printRatio() const {
    if (!plain_s_.empty() && !console_s_.empty()) {
      const double plain_ms = 1000 * median(plain_s_);
      const double console_ms = 1000 * median(console_s_);
      std::printf("%-28s plain libcli %7.2f ms, console %7.2f ms: %.1f times faster\n", command_, plain_ms,
                  console_ms, plain_ms / console_ms);
    }
  }

 private:
  void type(benchmark::State& state, const Command& command, const char* line,
            std::vector<double>& measured) {
    ConsoleProgram program("", command);
    ConsoleSession session(program.port());
    session.readUntil("> ");
    for (auto _ : state) {
      const auto start = steady_clock::now();
      const std::string text = session.type(line);
      const double seconds = Seconds(steady_clock::now() - start).count();
      if (text != text_) {
        state.SkipWithError("the rows differ");
        return;
      }
      state.SetIterationTime(seconds);
      measured.push_back(seconds);
    }
  }

  const char* command_;
  TemporaryFolder folder_;
  std::string file_;
  std::string text_;
  std::vector<double> plain_s_;
  std::vector<double> console_s_;
};

void startServer(benchmark::State& state, const Command& command, Measured* measured) {
  for (auto _ : state) {
    const auto start = steady_clock::now();
    ConsoleProgram program("", command);
    program.port();
    const double seconds = Seconds(steady_clock::now() - start).count();
    state.SetIterationTime(seconds);
    measured->start_s.push_back(seconds);
  }
}

long residentKib(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(6));
    }
  }
  return 0;
}

void atThePrompt(benchmark::State& state, const Command& command, Measured* measured) {
  for (auto _ : state) {
    ConsoleProgram program("", command);
    ConsoleSession session(program.port());
    session.readUntil("> ");
    measured->resident_kib = residentKib(program.pid());
    state.SetIterationTime(0.001);
  }
  state.counters["resident_KiB"] = static_cast<double>(measured->resident_kib);
}

void printRatios() {
  const double bare_ms = 1000 * median(yardstick.start_s);
  const double start_ms = 1000 * median(product.start_s);
  std::printf("start to listen: plain libcli %7.2f ms, console %7.2f ms: ratio %.1f\n", bare_ms, start_ms,
              start_ms / bare_ms);
  std::printf("resident memory: plain libcli %7ld KiB, console %6ld KiB: ratio %.1f\n",
              yardstick.resident_kib, product.resident_kib,
              static_cast<double>(product.resident_kib) / static_cast<double>(yardstick.resident_kib));
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const auto add = [](const std::string& name, auto&& function, int iterations) {
    benchmark::RegisterBenchmark(name.c_str(), function)
        ->UseManualTime()
        ->Iterations(iterations)
        ->Unit(benchmark::kMillisecond);
  };
  std::vector<std::unique_ptr<Rows>> tables;
  for (const char* command : kRowsCommands) {
    tables.push_back(std::make_unique<Rows>(command));
    Rows* const rows = tables.back().get();
    const std::string name = command;
    add(
        "plain/" + name, [rows](auto& state) { rows->typeAtPlainServer(state); }, 40);
    add(
        "console/" + name, [rows](auto& state) { rows->typeAtConsole(state); }, 200);
  }
  add(
      "start/plain", [](auto& state) { startServer(state, {PLAIN_SERVER}, &yardstick); }, 20);
  add(
      "start/console", [](auto& state) { startServer(state, productCommand(), &product); }, 20);
  add(
      "prompt/plain", [](auto& state) { atThePrompt(state, {PLAIN_SERVER}, &yardstick); }, 1);
  add(
      "prompt/console", [](auto& state) { atThePrompt(state, productCommand(), &product); }, 1);
  benchmark::RunSpecifiedBenchmarks();
  for (const auto& table : tables) {
    table->printRatio();
  }
  if (!product.start_s.empty() && !yardstick.start_s.empty()) {
    printRatios();
  }
  return 0;
}
