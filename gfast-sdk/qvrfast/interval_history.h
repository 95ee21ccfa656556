// The history of each line's counters: a ring of the day's quarter hours and a ring of days. The notification
// thread writes it at boundaries, the command thread at queries. One lock guards it. It is never held across
// a driver request, a callback or a message; the line table's lock may be taken while it is held, never the
// other way round.
#pragma once

#include <qvr.h>

#include <array>
#include <mutex>

namespace gfast {

// The indices wrap around after as many entries as the history has intervals. The array holds one entry more,
// which is never written.
template <uint8_t Intervals>
struct IntervalRing {
  uint8_t head;                   // of the running interval
  uint8_t tail;                   // of the oldest one kept
  uint8_t currentIntervalNumber;  // of the interval that began at the last boundary, 0 before the first
  std::array<QVR_intervalLinkCounterDB_t, Intervals + 1> counterHistory;

  static constexpr uint8_t after(uint8_t index) { return static_cast<uint8_t>((index + 1) % Intervals); }
  static constexpr uint8_t before(uint8_t index) {
    return static_cast<uint8_t>(index == 0 ? Intervals - 1 : index - 1);
  }

  QVR_intervalLinkCounterDB_t& running() { return counterHistory[head]; }

  uint8_t count() const {
    return static_cast<uint8_t>(head >= tail ? head - tail + 1 : head - tail + Intervals + 1);
  }

  bool reaches(int8_t interval) const { return interval <= count() - 1; }

  // The index of an interval, counted back from the running one. A negative interval counts forward, to old
  // entries that are still in the array, and wraps around at its end.
  uint8_t indexOf(int8_t interval) const {
    const auto index = static_cast<uint8_t>(head >= interval ? head - interval : head - interval + Intervals);
    return index < counterHistory.size() ? index : static_cast<uint8_t>(index % Intervals);
  }
};

using QVR_15minCounterHistoryDB_t = IntervalRing<QVR_K_NUMBER_OF_15MIN_INTERVALS_IN_HISTORY>;
using QVR_24hrCounterHistoryDB_t = IntervalRing<QVR_K_NUMBER_OF_24HR_INTERVALS_IN_HISTORY>;

struct LineHistory {
  QVR_15minCounterHistoryDB_t quarterHours;
  QVR_24hrCounterHistoryDB_t days;
  uint32_t boundaries;  // passed so far; a query compares it to notice a boundary
};

// Access to one line's history; holds the lock. A line id out of range ends the process in assertion 200.
class LockedHistory {
 public:
  explicit LockedHistory(QVR_lineId_t line);
  LockedHistory(const LockedHistory&) = delete;
  LockedHistory& operator=(const LockedHistory&) = delete;

  LineHistory* operator->() const { return &line_; }

 private:
  LineHistory& line_;
  const std::lock_guard<std::mutex> locked_;
};

// Sets both rings of both lines back to their first entry. The entries are not cleared.
void restartHistory();

}  // namespace gfast
