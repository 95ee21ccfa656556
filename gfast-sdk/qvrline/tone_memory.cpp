#include "qvrline/tone_memory.h"

#include "qvrline/phy_params.h"

using namespace gfast;

QVR_retval_t gfast::findLineInShowtime(QVR_lineId_t lineId, LineInShowtime* line) {
  if (QVR_deviceIdforLine(lineId) == QVR_K_DEVICE_NULL || QVR_isLineUp(lineId) != TRUE) {
    return QVR_E_ERROR;
  }
  line->id = lineId;
  QVR_linePhyParams_t said{};
  const QVR_retval_t status = QVR_getLinePhyParams(lineId, &said);
  line->tones = withinGrid(said);
  line->descriptor = QVR_lineDescriptorForLine(lineId);
  return status;
}

QVR_retval_t gfast::readTones(const LineInShowtime& line, LineEnd end, uint32_t (*addressOf)(uint32_t linkId),
                              void* bytes, uint32_t size) {
  if (size == 0) {
    return QVR_E_STATUS_OK;
  }
  return end == LineEnd::kNear
             ? QVR_readmem(line.descriptor.deviceId, addressOf(line.descriptor.narrowLineID), bytes, size)
             : QVR_readmemFarEnd(line.id, addressOf(0), bytes, size);
}
