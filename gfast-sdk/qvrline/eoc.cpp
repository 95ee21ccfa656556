#include "qvrline/eoc.h"

#include <array>
#include <mutex>

#include "qvrline/line_table.h"

namespace {

constinit std::array<std::mutex, QVR_K_MAX_LINES> eocLocks;

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
