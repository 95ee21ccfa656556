#include "clock/waiting.h"

#include <atomic>

#include "clock/clock.h"

using namespace gfast;

namespace {

std::atomic<bool (*)()> installed{nullptr};

}  // namespace

void gfast::installMayGoOn(bool (*mayGoOn)()) {
  installed = mayGoOn;
}

bool gfast::mayGoOn() {
  bool (*const ask)() = installed;
  return ask == nullptr || ask();
}

bool gfast::waitWhileAllowed(std::chrono::microseconds duration) {
  return clockSource().sleepWhile(duration, mayGoOn);
}
