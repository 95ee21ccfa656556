// How long an operator waits: a command of 2048 rows over a loopback session, the way to "Listening on port",
// and memory at the prompt; each beside the same from a libcli server that does no more than it must.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "support/console_session.h"

namespace {

using Command = std::vector<std::string>;
using Seconds = std::chrono::duration<double>;
using std::chrono::steady_clock;

constexpr const char* kRowsCommand = "read memory 0 d0000000 8192";  // 2048 rows of 4 bytes

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// What one server measured; the ratios are printed at the end.
struct Measured {
  std::vector<double> rows_s;
  std::vector<double> start_s;
  long resident_kib = 0;
};

Measured product;
Measured yardstick;

// The rows that both print.
class Rows {
 public:
  Rows() {
    ConsoleProgram lab("", {GFAST_LAB, "--port", "0"});
    ConsoleSession session(lab.port());
    session.awaitPrompt();
    text_ = session.type(kRowsCommand);
    std::string lines = text_;
    std::erase(lines, '\r');
    file_ = scratch_.write("rows.txt", lines);
  }
  const std::string& file() const { return file_; }
  const std::string& text() const { return text_; }

 private:
  ScratchDirectory scratch_;
  std::string file_;
  std::string text_;
};

const Rows& rows() {
  static const Rows collected;
  return collected;
}

Command productCommand() {
  return {GFAST_LAB, "--port", "0"};
}
Command yardstickCommand() {
  return {PLAIN_SERVER, rows().file()};
}

void typeRows(benchmark::State& state, const Command& command, const char* line, Measured* measured) {
  ConsoleProgram program("", command);
  ConsoleSession session(program.port());
  session.readUntil("> ");
  for (auto _ : state) {
    const auto start = steady_clock::now();
    const std::string text = session.type(line);
    const double seconds = Seconds(steady_clock::now() - start).count();
    if (text != rows().text()) {
      state.SkipWithError("the rows differ");
      return;
    }
    state.SetIterationTime(seconds);
    measured->rows_s.push_back(seconds);
  }
}

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
  const double plain_ms = 1000 * median(yardstick.rows_s);
  const double rows_ms = 1000 * median(product.rows_s);
  std::printf("2048 rows:       plain libcli %7.2f ms, console %7.2f ms: %.1f times faster\n", plain_ms,
              rows_ms, plain_ms / rows_ms);
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
  const auto add = [](const char* name, auto&& function, int iterations) {
    benchmark::RegisterBenchmark(name, function)
        ->UseManualTime()
        ->Iterations(iterations)
        ->Unit(benchmark::kMillisecond);
  };
  add(
      "rows/plain", [](auto& state) { typeRows(state, yardstickCommand(), "rows", &yardstick); }, 40);
  add(
      "rows/console", [](auto& state) { typeRows(state, productCommand(), kRowsCommand, &product); }, 200);
  add(
      "start/plain", [](auto& state) { startServer(state, {PLAIN_SERVER}, &yardstick); }, 20);
  add(
      "start/console", [](auto& state) { startServer(state, productCommand(), &product); }, 20);
  add(
      "prompt/plain", [](auto& state) { atThePrompt(state, {PLAIN_SERVER}, &yardstick); }, 1);
  add(
      "prompt/console", [](auto& state) { atThePrompt(state, productCommand(), &product); }, 1);
  benchmark::RunSpecifiedBenchmarks();
  if (!product.rows_s.empty() && !yardstick.rows_s.empty() && !product.start_s.empty()) {
    printRatios();
  }
  return 0;
}
