#include "qvrcli/reading/running_totals.h"

#include <algorithm>

#include "qvrcli/reading/counter_columns.h"

namespace gfast::console {

namespace {

// Far more than a chip counts between two readings, and far less than it counts until it wraps.
constexpr uint32_t kMostInOneStep = 1U << 31;

bool wentBack(const EndCounters& before, const EndCounters& now) {
  return std::ranges::any_of(kCounterColumns, [&](const CounterColumn& column) {
    return now.*column.field - before.*column.field >= kMostInOneStep;
  });
}

}  // namespace

EndTotals RunningTotals::add(const EndCounters& counters, bool restarted) {
  const bool fromZero = !last_ || restarted || wentBack(*last_, counters);
  for (size_t i = 0; i < kCounterColumns.size(); i++) {
    const uint32_t now = counters.*kCounterColumns[i].field;
    const uint32_t before = fromZero ? 0 : (*last_).*kCounterColumns[i].field;
    totals_[i] += static_cast<uint32_t>(now - before);
  }
  last_ = counters;
  return totals_;
}

}  // namespace gfast::console
