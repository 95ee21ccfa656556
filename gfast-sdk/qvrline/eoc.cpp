#include "qvrline/eoc.h"

#include <array>
#include <mutex>
#include <type_traits>

#include "qvrline/line_table.h"

namespace {

// Trivially destructible, so the notification thread may use them for as long as the process lives.
constinit std::array<std::mutex, QVR_K_MAX_LINES> eocLocks;
static_assert(std::is_trivially_destructible_v<decltype(eocLocks)>);

std::mutex& QVR_eocLockForLine(QVR_lineId_t lineId) {
  requireLine(lineId);
  return eocLocks[static_cast<size_t>(QVR_log2int(lineId))];
}

}  // namespace

void QVR_EOC_CaptureLine(QVR_lineId_t lineId) {
  QVR_eocLockForLine(lineId).lock();
}

void QVR_EOC_ReleaseLine(QVR_lineId_t lineId) {
  QVR_eocLockForLine(lineId).unlock();
}
