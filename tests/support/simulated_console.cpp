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
constexpr int64_t kMicroseconds = 1000000;

std::string printed;

void keep(cli_def* /*cli*/, const char* line) {
  printed += line;
  printed += '\n';
}

}  // namespace

double WaitingClock::seconds() const {
  return static_cast<double>(elapsed_us_) / static_cast<double>(kMicroseconds);
}

void WaitingClock::awaitOtherThread() const {
  while (!otherWaits_) {
    std::this_thread::yield();
  }
}

time_t WaitingClock::now() {
  return kPowerUp + static_cast<time_t>(elapsed_us_ / kMicroseconds);
}

void WaitingClock::sleep(std::chrono::microseconds duration) {
  elapsed_us_ += duration.count();
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

SimulatedConsole::SimulatedConsole(const BoardConfig& config)
    : board_(config, [this] { return clock_.seconds(); }) {
  setenv("TZ", "UTC0", 1);
  tzset();
  clock_.advances(board_);
}

void SimulatedConsole::start(Driver& driver) {
  installDriver(driver);
  installMayGoOn(commandMayGoOn);
  interpreter_ = cli_init();
  cli_print_callback(interpreter_, keep);
  QVR_cliInit(interpreter_);
  round_ = std::make_unique<NotificationRound>();
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
