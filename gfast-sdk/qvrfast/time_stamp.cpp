#include "qvrfast/time_stamp.h"

#include <cstdio>
#include <ctime>

using namespace gfast;

namespace {

constexpr uint32_t kSecondsInHour = 3600;
constexpr uint32_t kSecondsInMinute = 60;

// Returns all zeros for a time that has no calendar date.
tm localTime(time_t time) {
  tm local{};
  if (localtime_r(&time, &local) == nullptr) {
    local = {};
  }
  return local;
}

}  // namespace

void gfast::formatTimeStamp(time_t time, G9972_timeStamp_t& stamp) {
  const tm local = localTime(time);
  // strftime leaves the buffer undefined if it is too short. So each part has more room than the stamp, and
  // the stamp is cut afterwards.
  char moment[48];
  char zone[64];
  if (std::strftime(moment, sizeof moment, "%Y-%m-%dT%H:%M:%S", &local) == 0) {
    moment[0] = '\0';
  }
  if (std::strftime(zone, sizeof zone, "%Z", &local) == 0) {
    zone[0] = '\0';
  }
  if (std::snprintf(stamp, sizeof stamp, "%s+%s", moment, zone) < 0) {
    stamp[0] = '\0';
  }
}

uint32_t gfast::intervalNumberAt(time_t time) {
  const tm local = localTime(time);
  const auto seconds = static_cast<uint32_t>(local.tm_hour) * kSecondsInHour +
                       static_cast<uint32_t>(local.tm_min) * kSecondsInMinute +
                       static_cast<uint32_t>(local.tm_sec);
  return seconds / QVR_K_SECS_IN_15MIN_COLLECTION_INTERVAL + 1;
}
