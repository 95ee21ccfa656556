// How long an operator waits: a command of one line, commands of 2048 rows over a loopback session, the way
// to "Listening on port"; and memory at the prompt. The yardstick is the smallest libcli server, and for
// tables that the far end measures, the time that the board needs for the exchanges with it.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "row.h"
#include "support/board_texts.h"
#include "support/console_session.h"
#include "support/temporary_folder.h"

namespace {

using Command = std::vector<std::string>;
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr int kPlainTimes = 15;
constexpr int kConsoleTimes = 40;
constexpr int kRounds = 5;
constexpr int kStarts = 40;
constexpr auto kExchange = 4ms;  // with the far end, on the virtual board

struct Table {
  const char* command;
  int exchanges;  // with the far end
};

constexpr Table kTables[] = {{"read memory 0 d0000000 8192", 0},
                             {"show BITSps 0 ds", 0},
                             {"show BITS-RMCps 0 ds", 0},
                             {"show SNRps 0 us", 0},
                             {"show ALNps 0 us", 0},
                             {"show phy info 0 ne", 0},
                             {"show HLOGps 0 us", 8},
                             {"show SNRps 0 ds", 8},
                             {"show HLOGps 0 ds", 22},
                             {"show ALNps 0 ds", 30},
                             {"show phy info 0 fe", 30}};

double medianTime_ms(int times, const std::function<void()>& work) {
  std::vector<double> all_ms;
  for (int i = 0; i < times; i++) {
    const auto start = steady_clock::now();
    work();
    all_ms.push_back(Milliseconds(steady_clock::now() - start).count());
  }
  return medianOf(all_ms);
}

// How long a line takes whose text is known: the median of each round, and of the rounds the one that others
// on the computer disturbed least.
double typed_ms(const Command& command, const char* line, const std::string& text, int times) {
  ConsoleProgram program("", command);
  ConsoleSession session(program.port());
  session.readUntil("> ");
  double least_ms = HUGE_VAL;
  for (int i = 0; i < kRounds; i++) {
    const double round_ms = medianTime_ms(times, [&] {
      if (session.type(line) != text) {
        std::fprintf(stderr, "session-bench: %s: another text\n", line);
        std::exit(EXIT_FAILURE);
      }
    });
    least_ms = std::min(least_ms, round_ms);
  }
  return least_ms;
}

std::string textOf(const Command& console, const char* line) {
  ConsoleProgram program("", console);
  ConsoleSession session(program.port());
  session.awaitPrompt();
  return session.type(line);
}

double plain_ms(const std::string& text) {
  const TemporaryFolder folder;
  std::string lines = text;
  std::erase(lines, '\r');
  return typed_ms({PLAIN_SERVER, folder.write("rows.txt", lines)}, "rows", text, kPlainTimes);
}

double exchanges_ms(int count) {
  return medianTime_ms(kPlainTimes, [&] {
    for (int i = 0; i < count; i++) {
      std::this_thread::sleep_for(kExchange);
    }
  });
}

void measureTable(const Command& console, const Table& table) {
  const std::string text = textOf(console, table.command);
  const double console_ms = typed_ms(console, table.command, text, kConsoleTimes);
  if (table.exchanges == 0) {
    printRow(table.command, console_ms, plain_ms(text), "ms", ">= 40");
  } else {
    printRow(table.command, console_ms, exchanges_ms(table.exchanges), "ms", "<= 1.1");
  }
}

void measureRoundTrip(const Command& console) {
  const char* const line = "show number lines";
  const std::string text = textOf(console, line);
  printRow("round trip, " + std::string(line), typed_ms(console, line, text, kConsoleTimes), plain_ms(text),
           "ms", ">= 1");
}

double start_ms(const Command& command) {
  std::vector<double> all_ms;
  for (int i = 0; i < kStarts; i++) {
    const auto start = steady_clock::now();
    ConsoleProgram program("", command);
    program.port();
    all_ms.push_back(Milliseconds(steady_clock::now() - start).count());
  }
  return medianOf(all_ms);
}

double resident_kib(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stod(line.substr(6));
    }
  }
  return 0;
}

pid_t childOf(pid_t parent) {
  const std::string number = std::to_string(parent);
  pid_t child = 0;
  std::ifstream("/proc/" + number + "/task/" + number + "/children") >> child;
  return child;
}

double residentAtPrompt_kib(const Command& command) {
  ConsoleProgram program("", command);
  ConsoleSession session(program.port());
  session.readUntil("> ");
  return resident_kib(program.pid());
}

// Of a console in front of device files, which another process serves.
double residentUnderDesk_kib(const char* console) {
  ConsoleProgram desk("", {GFAST_DESK, "--", console});
  ConsoleSession session(desk.port());
  session.awaitPrompt();
  return resident_kib(childOf(desk.pid()));
}

// A program that serves readings is held against the smallest server of both kinds.
void measureMemory(const Command& lab, const Command& plain) {
  const auto print = [](const char* who, double kib, double plain_kib) {
    printRow("resident at the prompt, " + std::string(who), kib, plain_kib, "KiB", "<= 1.5");
  };
  print("gfast-cli as on a board", residentUnderDesk_kib(BOARD_CONSOLE), residentAtPrompt_kib(plain));
#ifdef PLAIN_WEB_SERVER
  const double plainWeb_kib = residentAtPrompt_kib({PLAIN_WEB_SERVER});
  print("gfast-cli with HTTP", residentUnderDesk_kib(GFAST_CLI), plainWeb_kib);
  print("gfast-lab", residentAtPrompt_kib(lab), plainWeb_kib);
#endif
}

}  // namespace

int main() {
  setenv("GFAST_LISTEN", "127.0.0.1:0", 1);  // gfast-cli has no option for its port
  const TemporaryFolder folder;
  const Command showtime{GFAST_LAB, "--board", folder.write("board.toml", boardWithLines("showtime")),
                         "--port", "0"};
  const Command console{GFAST_LAB, "--port", "0"};
  const Command plain{PLAIN_SERVER};
  measureRoundTrip(showtime);
  for (const Table& table : kTables) {
    measureTable(showtime, table);
  }
  printRow("from start to \"Listening on port\"", start_ms(console), start_ms(plain), "ms", "< 20 ms");
  measureMemory(console, plain);
}
