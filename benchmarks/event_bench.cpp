// How soon an event is printed on standard output, and what an idle console costs.
//
// The event is a line's change between idle and silent, raised by the command that activates or deactivates
// it: the time runs from the command's last key to the line at the other end of the pipe, so it includes
// session and interpreter. The yardstick is the smallest program: an eventfd, select, printf, a pipe. That of
// the idle console is a process that looks twice a second.
//
// usage: event-bench [CONSOLE]
// Measures gfast-lab; or a console in front of a board that is there already, its lines idle, and then only
// the time.
#include <sys/eventfd.h>
#include <sys/select.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "row.h"
#include "support/board_texts.h"
#include "support/console_session.h"
#include "support/temporary_folder.h"

namespace {

using namespace std::chrono_literals;
using Milliseconds = std::chrono::duration<double, std::milli>;
using std::chrono::steady_clock;

constexpr int kEvents = 600;
constexpr auto kPause = 5ms;  // between two events: everything is asleep again
constexpr auto kIdleTime = 10s;

struct Latency {
  double median_ms;
  double high_ms;  // 99 of 100 are not above
};

Latency summarize(std::vector<double> times_ms) {
  std::sort(times_ms.begin(), times_ms.end());
  return {times_ms[times_ms.size() / 2], times_ms[times_ms.size() * 99 / 100]};
}

double since(steady_clock::time_point start) {
  return Milliseconds(steady_clock::now() - start).count();
}

// The child of the yardstick: a line for every time the descriptor becomes readable.
[[noreturn]] void printWhenReadable(int descriptor, int output) {
  dup2(output, STDOUT_FILENO);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  for (;;) {
    fd_set descriptors;
    FD_ZERO(&descriptors);
    FD_SET(descriptor, &descriptors);
    select(descriptor + 1, &descriptors, nullptr, nullptr, nullptr);
    uint64_t count = 0;
    if (read(descriptor, &count, sizeof count) != sizeof count) {
      _exit(1);
    }
    std::printf("Link [%1d] state changed from %s to %s\n", 1, "idle           ", "silent         ");
  }
}

Latency measureBareLoop() {
  const int descriptor = eventfd(0, 0);
  int pipes[2];
  if (descriptor < 0 || pipe(pipes) < 0) {
    std::perror("event-bench");
    std::exit(1);
  }
  const pid_t child = fork();
  if (child == 0) {
    printWhenReadable(descriptor, pipes[1]);
  }
  std::vector<double> times_ms;
  for (int i = 0; i < kEvents; i++) {
    std::this_thread::sleep_for(kPause);
    const uint64_t one = 1;
    char line[256];
    const auto start = steady_clock::now();
    if (write(descriptor, &one, sizeof one) != sizeof one || read(pipes[0], line, sizeof line) <= 0) {
      std::exit(1);
    }
    times_ms.push_back(since(start));
  }
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  for (const int end : {descriptor, pipes[0], pipes[1]}) {
    close(end);
  }
  return summarize(times_ms);
}

// Device 0 stays idle, so the line of device 1 goes no further than to silent.
Latency measureConsole(const std::vector<std::string>& command) {
  ConsoleProgram console("", command);
  ConsoleSession session(console.port());
  session.awaitPrompt();
  std::vector<double> times_ms;
  for (int i = 0; i < kEvents; i++) {
    const bool up = i % 2 == 0;
    const std::string words = up ? "activate line 1" : "deactivate line 1";
    session.send(words);
    session.readUntil(words);
    std::this_thread::sleep_for(kPause);
    const auto start = steady_clock::now();
    session.send("\r");
    console.awaitOutput(up ? "to silent         \n" : "to idle           \n", i / 2 + 1);
    times_ms.push_back(since(start));
    session.awaitPrompt();
  }
  return summarize(times_ms);
}

Latency measureLab() {
  const TemporaryFolder folder;
  return measureConsole(
      {GFAST_LAB, "--board", folder.write("board.toml", boardWithLines("idle")), "--port", "0"});
}

// What a thread has done so far.
struct Usage {
  long voluntary = 0;    // times it went to sleep, and so woke
  long involuntary = 0;  // times it was moved aside
  double run_ms = 0;
};

Usage usageOf(const std::filesystem::path& task) {
  Usage usage;
  std::ifstream status(task / "status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("voluntary_ctxt_switches:")) {
      usage.voluntary = std::stol(line.substr(24));
    } else if (line.starts_with("nonvoluntary_ctxt_switches:")) {
      usage.involuntary = std::stol(line.substr(27));
    }
  }
  long run_ns = 0;
  std::ifstream(task / "schedstat") >> run_ns;
  usage.run_ms = static_cast<double>(run_ns) / 1e6;
  return usage;
}

std::map<int, Usage> usageOfThreads(pid_t pid) {
  std::map<int, Usage> threads;
  for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
    threads[std::stoi(task.path().filename().string())] = usageOf(task.path());
  }
  return threads;
}

// Threads are numbered by age: the first one runs the commands. Returns the wake-ups a second of all of them.
double printIdleCost(const char* who, pid_t pid) {
  const auto before = usageOfThreads(pid);
  const auto start = steady_clock::now();
  std::this_thread::sleep_for(kIdleTime);
  const auto after = usageOfThreads(pid);
  const double seconds = since(start) / 1000;
  Usage all;
  int number = 0;
  const auto print = [&](const std::string& name, const Usage& usage) {
    std::printf("idle, %-18s %-10s %6.2f wake-ups/s, %6.2f moved aside/s, %7.3f ms CPU/s\n", who,
                name.c_str(), static_cast<double>(usage.voluntary) / seconds,
                static_cast<double>(usage.involuntary) / seconds, usage.run_ms / seconds);
  };
  for (const auto& [thread, then] : before) {
    const Usage now = after.at(thread);
    const Usage spent{now.voluntary - then.voluntary, now.involuntary - then.involuntary,
                      now.run_ms - then.run_ms};
    all = {all.voluntary + spent.voluntary, all.involuntary + spent.involuntary, all.run_ms + spent.run_ms};
    print("thread " + std::to_string(++number), spent);
  }
  print("together", all);
  return static_cast<double>(all.voluntary) / seconds;
}

// Looks twice a second, as the console's notification thread does, and does nothing else.
double measureBareLook() {
  const pid_t child = fork();
  if (child == 0) {
    for (;;) {
      timeval half{0, 500000};
      select(0, nullptr, nullptr, nullptr, &half);
    }
  }
  const double wakeUps = printIdleCost("bare look:", child);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  return wakeUps;
}

void measureIdle() {
  const TemporaryFolder folder;
  ConsoleProgram lab(
      "", {GFAST_LAB, "--board", folder.write("board.toml", boardWithLines("showtime")), "--port", "0"});
  const uint16_t port = lab.port();
  std::this_thread::sleep_for(1s);
  printIdleCost("nobody connected:", lab.pid());
  ConsoleSession session(port);
  session.awaitPrompt();
  const double wakeUps = printIdleCost("at the prompt:", lab.pid());
  printRow("idle, at the prompt", wakeUps, measureBareLook(), "wake-ups/s", "<= 1.1");
}

}  // namespace

int main(int argc, char* argv[]) {
  const bool isLab = argc < 2;
  const Latency bare = measureBareLoop();
  const Latency console = isLab ? measureLab() : measureConsole({argv[1]});
  std::printf("event to line:   bare loop median %.3f ms, 99 %% within %.3f ms\n", bare.median_ms,
              bare.high_ms);
  std::printf("event to line:   %-9s median %.3f ms, 99 %% within %.3f ms\n", isLab ? "lab" : "console",
              console.median_ms, console.high_ms);
  std::printf("event to line:   ratio     median %.1f,    99 %% %.1f\n", console.median_ms / bare.median_ms,
              console.high_ms / bare.high_ms);
  if (isLab) {
    printRow("from event to line, median", console.median_ms, bare.median_ms, "ms", "< 2 ms");
    printRow("from event to line, 99 % within", console.high_ms, bare.high_ms, "ms", "< 2 ms");
    measureIdle();
  }
  return 0;
}
