#include "qvrline/eoc.h"

#include <array>
#include <mutex>
#include <type_traits>

#include "qvrline/line_table.h"

using namespace gfast;

namespace {

// Trivially destructible, so the notification thread may use them until the process ends.
constinit std::array<std::mutex, QVR_K_MAX_LINES> eocLocks;
static_assert(std::is_trivially_destructible_v<decltype(eocLocks)>);

std::mutex& QVR_eocLockForLine(QVR_lineId_t lineId) {
  requireLine(lineId);
  return eocLocks[static_cast<size_t>(QVR_log2int(lineId))];
}

}  // namespace

void gfast::QVR_EOC_CaptureLine(QVR_lineId_t lineId) {
  QVR_eocLockForLine(lineId).lock();
}

void gfast::QVR_EOC_ReleaseLine(QVR_lineId_t lineId) {
  QVR_eocLockForLine(lineId).unlock();
}

QVR_retval_t gfast::askFarEnd(QVR_lineId_t lineId, MGMT_FAR_END_REQ_TYPE type, uint8_t* response,
                              uint32_t size) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(lineId);
  if (line.deviceId == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  const EocExchange exchange(lineId);
  uint32_t received = 0;
  const QVR_retval_t status = QVR_sendMsgToFarEnd(line.deviceId, static_cast<uint16_t>(line.narrowLineID),
                                                  type, response, 0, size, &received);
  return QVR_STATUS_OK(status) && received >= size ? QVR_E_STATUS_OK : QVR_E_FAILED_SENDING_FAR_END_MSG;
}
