#include "support/simulated_console.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "clock/waiting.h"
#include "qvrcli/qvrcli.h"
#include "qvrcli/session/script_lines.h"
#include "qvrcli/session/stop.h"

using namespace gfast;
using namespace gfast::board;
using namespace gfast::console;

namespace {

constexpr time_t kPowerUp = 1700006400;  // 2023-11-15 00:00:00 UTC, a midnight

std::string printed;
size_t mostPrinted = std::string::npos;

// Standard output becomes a pipe without a reader.
void loseStandardOutput() {
  int ends[2];
  if (pipe(ends) == 0) {
    close(ends[0]);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
  }
}

void keep(cli_def* /*cli*/, const char* line) {
  const bool was = printed.size() > mostPrinted;
  printed += line;
  printed += '\n';
  if (!was && printed.size() > mostPrinted) {
    loseStandardOutput();
  }
}

}  // namespace

double WaitingClock::seconds() const {
  const std::lock_guard guard(lock_);
  return std::chrono::duration<double>(elapsed_).count();
}

void WaitingClock::awaitOtherThread() const {
  while (!otherWaits_) {
    std::this_thread::yield();
  }
}

time_t WaitingClock::now() {
  return kPowerUp + static_cast<time_t>(seconds());
}

std::chrono::microseconds WaitingClock::steady() {
  const std::lock_guard guard(lock_);
  return elapsed_;
}

void WaitingClock::sleep(std::chrono::microseconds duration) {
  {
    const std::lock_guard guard(lock_);
    elapsed_ += duration;
  }
  if (board_ != nullptr) {
    board_->advance();
  }
}

bool WaitingClock::sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) {
  sleep(duration);
  waitsEnded_ = waitsEnded_ || seconds() >= waitsEnd_s_;
  return !waitsEnded_ && mayGoOn();
}

int WaitingClock::waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) {
  while (std::this_thread::get_id() != owner_) {
    otherWaits_ = true;
    pause();
  }
  timeval atOnce{0, 0};
  const int ready = select(limit, &descriptors, nullptr, nullptr, &atOnce);
  if (ready > 0) {
    return ready;
  }
  FD_ZERO(&descriptors);
  sleep(duration);
  return 0;
}

SimulatedConsole::SimulatedConsole(const BoardConfig& config) : config_(config) {
  setenv("TZ", "UTC0", 1);
  tzset();
  switchOn();
}

void SimulatedConsole::switchOn() {
  const double start = clock_.seconds();
  board_ = std::make_unique<VirtualBoard>(config_, [this, start] { return clock_.seconds() - start; });
  clock_.advances(*board_);
}

void SimulatedConsole::renewBoard() {
  renews_ = true;
  run("rediscover");
}

void SimulatedConsole::rediscovered() {
  if (renews_) {
    switchOn();
    renews_ = false;
  }
}

void SimulatedConsole::loseOutputAfter(size_t bytes) {
  mostPrinted = bytes;
}

void SimulatedConsole::start(Driver& driver) {
  installDriver(driver);
  installMayGoOn(commandMayGoOn);
  interpreter_ = cli_init();
  keepPrints();
  QVR_cliInit(interpreter_);
  round_ = std::make_unique<NotificationRound>();
}

void SimulatedConsole::keepPrints() {
  cli_print_callback(interpreter_, keep);
}

std::string SimulatedConsole::run(const std::string& lines) {
  printed.clear();
  // One byte more: fmemopen refuses to open nothing.
  const std::string script = lines + '\n';
  FILE* const file = fmemopen(const_cast<char*>(script.data()), script.size(), "r");
  runLines(interpreter_, file);
  std::fclose(file);
  return printed;
}

void SimulatedConsole::pass(double seconds) {
  const double end = clock_.seconds() + seconds;
  while (clock_.seconds() < end) {
    round_->step();
  }
}
