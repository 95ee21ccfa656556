// Counters of 32 bits that start anew with their chip, made into counters that only grow.
#pragma once

#include <optional>

#include "qvrcli/reading/line_reading.h"

namespace gfast::console {

// Of one end of one line.
class RunningTotals {
 public:
  // The totals after this reading. `restarted`: a chip has started anew since the last one.
  EndTotals add(const EndCounters& counters, bool restarted);

 private:
  std::optional<EndCounters> last_;
  EndTotals totals_{};
};

}  // namespace gfast::console
