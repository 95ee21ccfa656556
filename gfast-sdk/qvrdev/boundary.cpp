// The quarter-hour boundary of local time, by which performance counters are collected (ITU-T G.997.2).

#include "clock/clock.h"

#include <qvr.h>

using namespace gfast;

namespace {

constexpr int kMinutesInInterval = 15;
constexpr int kSecondsInMinute = 60;

}  // namespace

uint32_t QVR_secsTo15minBoundary(time_t* xo_now) {
  const time_t now = clockSource().now();
  tm local{};
  localtime_r(&now, &local);
  const int boundary = (local.tm_min / kMinutesInInterval + 1) * kMinutesInInterval;
  if (xo_now != nullptr) {
    *xo_now = now;
  }
  return static_cast<uint32_t>((boundary - local.tm_min) * kSecondsInMinute - local.tm_sec);
}
