#include "qvrcli/text/standard_output.h"

#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

namespace gfast::console {

namespace {

constexpr size_t kMostWaitingTexts = 5000;  // texts, some 100 bytes each
constexpr int kForEver = -1;

struct WaitingTexts {
  std::mutex lock;  // also held while printing, which does not wait
  std::deque<std::string> texts;
  size_t lost = 0;  // that came behind these
  bool printerRuns = false;
};

// Never destroyed: the notification thread may still print while the process exits.
WaitingTexts& waitingTexts() {
  static auto& waiting = *new WaitingTexts;
  return waiting;
}

// Whether standard output takes a line, or its reader has gone. A pipe that does has room for 4096 bytes.
bool takesALine(int patience_ms) {
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, patience_ms) > 0;
}

void print(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

// Prints what standard output takes now. False when something still waits.
bool printSome(WaitingTexts& waiting) {
  while (!waiting.texts.empty() && takesALine(0)) {
    print(waiting.texts.front());
    waiting.texts.pop_front();
  }
  if (waiting.texts.empty() && waiting.lost > 0 && takesALine(0)) {
    print(std::to_string(waiting.lost) + " lines lost\n");
    waiting.lost = 0;
  }
  return waiting.texts.empty() && waiting.lost == 0;
}

void printWhenRead() {
  WaitingTexts& waiting = waitingTexts();
  for (;;) {
    takesALine(kForEver);
    const std::lock_guard guard(waiting.lock);
    if (printSome(waiting)) {
      waiting.printerRuns = false;
      return;
    }
  }
}

// Without a thread to spare, the next text tries again.
void startPrinter(WaitingTexts& waiting) {
  try {
    std::thread(printWhenRead).detach();
    waiting.printerRuns = true;
  } catch (const std::system_error&) {
  }
}

}  // namespace

void printWithoutWaiting(std::string_view text) {
  WaitingTexts& waiting = waitingTexts();
  const std::lock_guard guard(waiting.lock);
  if (waiting.texts.empty() && waiting.lost == 0 && takesALine(0)) {
    print(text);
    return;
  }
  if (waiting.lost == 0 && waiting.texts.size() < kMostWaitingTexts) {
    waiting.texts.emplace_back(text);
  } else {
    waiting.lost++;
  }
  if (!waiting.printerRuns) {
    startPrinter(waiting);
  }
}

void finishStandardOutput() {
  WaitingTexts& waiting = waitingTexts();
  for (;;) {
    {
      const std::lock_guard guard(waiting.lock);
      if (printSome(waiting)) {
        return;
      }
    }
    takesALine(kForEver);
  }
}

}  // namespace gfast::console
