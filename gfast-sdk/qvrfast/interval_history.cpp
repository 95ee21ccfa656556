#include "qvrfast/interval_history.h"

#include <type_traits>

#include "qvrline/line_table.h"

using namespace gfast;

namespace {

struct History {
  std::mutex mutex;
  std::array<LineHistory, QVR_K_MAX_LINES> lines{};
};

// Trivially destructible, so the notification thread may still use it while the process exits.
constinit History history;
static_assert(std::is_trivially_destructible_v<History>);

LineHistory& historyOf(QVR_lineId_t line) {
  requireLine(line);
  return history.lines[static_cast<size_t>(line)];
}

template <typename Ring>
void restart(Ring& ring) {
  ring.head = 0;
  ring.tail = 0;
  ring.currentIntervalNumber = 0;
}

}  // namespace

LockedHistory::LockedHistory(QVR_lineId_t line) : line_(historyOf(line)), locked_(history.mutex) {}

void gfast::restartHistory() {
  for (QVR_lineId_t line = 0; line <= QVR_K_LINE_ID_LAST; line++) {
    const LockedHistory locked(line);
    restart(locked->quarterHours);
    restart(locked->days);
  }
}
