// Letting lines train, re-initialising them, taking them down.
#include <qvr.h>

#include <algorithm>

#include "chip/registers.h"
#include "qvrline/line_table.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

QVR_retval_t writeWord(QVR_deviceId_t device, uint32_t address, uint32_t value) {
  uint8_t word[4];
  store_le32(word, value);
  return QVR_writemem(device, address, word, sizeof word);
}

}  // namespace

QVR_retval_t QVR_resetLine(QVR_lineId_t xi_lineId) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  QVR_deviceInfo_t info;
  const QVR_retval_t status = QVR_getDeviceInfo(line.deviceId, &info);
  if (QVR_STATUS_ERROR(status) || info.lineState[line.narrowLineID] != LS_SHOWTIME) {
    return status;
  }
  return writeWord(line.deviceId, VIRT_ADDR_REINIT(line.narrowLineID), 0);  // the write itself is the request
}

QVR_retval_t QVR_resetLines() {
  // A device that was lost and found again is counted twice, but has no further lines.
  const uint32_t lines =
      std::min<uint32_t>(QVR_numberOfDevices() * QVR_numberOfLinesInDevice(), QVR_K_MAX_LINES);
  QVR_retval_t lastFailure = QVR_E_STATUS_OK;
  for (uint32_t line = 0; line < lines; line++) {
    const QVR_retval_t status = QVR_resetLine(static_cast<QVR_lineId_t>(line));
    lastFailure = QVR_STATUS_ERROR(status) ? status : lastFailure;
  }
  return lastFailure;
}

QVR_retval_t QVR_activateLine(QVR_lineId_t xi_lineId, BOOL xi_activate) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  const QVR_retval_t status =
      writeWord(line.deviceId, VIRT_ADDR_LINKS_PROVISION(line.narrowLineID), xi_activate == TRUE ? 1 : 0);
  // Without re-initialisation a line that is already up would stay up.
  return xi_activate == TRUE ? status : writeWord(line.deviceId, VIRT_ADDR_REINIT(line.narrowLineID), 0);
}
