#include "qvrcli/reading/day_figures.h"

#include <algorithm>

namespace gfast::console {

namespace {

// The lower of what is there.
template <typename Value>
void lower(std::optional<Value>& lowest, const std::optional<Value>& value) {
  if (value) {
    lowest = std::min(*value, lowest.value_or(*value));
  }
}

void takeLowest(const DirectionReading& direction, DirectionFigures& figures) {
  lower(figures.netDataRate_kbps, direction.netDataRate_kbps);
  lower(figures.snrMargin_db, direction.snrMargin_db);
}

}  // namespace

void DayFigures::add(const LineReading& line, time_t time) {
  const time_t start = time - time % QVR_K_SECS_IN_15MIN_INTERVAL;
  if (quarters_.empty() || quarters_.back().start != start) {
    quarters_.push_back({start, {}, {}});
  }
  if (quarters_.size() > kQuarterHoursOfDay) {
    quarters_.pop_front();
  }
  takeLowest(line.downstream, quarters_.back().downstream);
  takeLowest(line.upstream, quarters_.back().upstream);
}

}  // namespace gfast::console
