// Rates and margins of the last day by quarter hour. The chip keeps counters for that long, but no figures.
#pragma once

#include <deque>

#include "qvrcli/reading/line_reading.h"

namespace gfast::console {

constexpr size_t kQuarterHoursOfDay = 96;

// Of one line.
class DayFigures {
 public:
  // Takes the figures of a reading into the quarter hour in which it was made.
  void add(const LineReading& line, time_t time);

  // Oldest first, the running one last.
  std::vector<QuarterFigures> all() const { return {quarters_.begin(), quarters_.end()}; }

 private:
  std::deque<QuarterFigures> quarters_;
};

}  // namespace gfast::console
