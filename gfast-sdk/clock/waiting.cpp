#include "clock/waiting.h"

#include <atomic>

#include "clock/clock.h"

using namespace gfast;

namespace {

std::atomic<bool (*)()> installedAnswer{nullptr};

}  // namespace

void gfast::installMayGoOn(bool (*mayGoOn)()) {
  installedAnswer = mayGoOn;
}

bool gfast::mayGoOn() {
  bool (*const ask)() = installedAnswer;
  return ask == nullptr || ask();
}

bool gfast::waitWhileAllowed(std::chrono::microseconds duration) {
  return clockSource().sleepWhile(duration, mayGoOn);
}
