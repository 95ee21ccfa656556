#include "qvrline/afe_params.h"

#include "chip/tones.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kGainMask = 63;  // dB
constexpr uint32_t kAceOn = 1;

QVR_retval_t readWord(const LineInShowtime& line, LineEnd end, uint32_t (*addressOf)(uint32_t linkId),
                      uint32_t* value) {
  uint8_t word[sizeof *value] = {};
  const QVR_retval_t status = readTones(line, end, addressOf, word, sizeof word);
  *value = load_le32(word);
  return status;
}

QVR_retval_t readOfLine(QVR_lineId_t lineId, LineEnd end, QVR_AFE_PARAMS_t* afe) {
  LineInShowtime line{};
  const QVR_retval_t status = findLineInShowtime(lineId, &line);
  return QVR_STATUS_OK(status) ? readAfe(line, end, afe) : status;
}

}  // namespace

QVR_retval_t gfast::readAfe(const LineInShowtime& line, LineEnd end, QVR_AFE_PARAMS_t* afe) {
  uint32_t gain = 0;
  if (const QVR_retval_t status = readWord(line, end, VIRT_ADDR_RX_GAIN, &gain); QVR_STATUS_ERROR(status)) {
    return status;
  }
  uint32_t mode = 0;
  if (const QVR_retval_t status = readWord(line, end, VIRT_ADDR_RX_ACE_MODE, &mode);
      QVR_STATUS_ERROR(status)) {
    return status;
  }
  *afe = {static_cast<double>(gain & kGainMask), mode & kAceOn};
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_getAfeParams(QVR_lineId_t xi_lineId, QVR_AFE_PARAMS_t* xo_afe) {
  return readOfLine(xi_lineId, LineEnd::kNear, xo_afe);
}

QVR_retval_t QVR_getFarEndAfeParams(QVR_lineId_t xi_lineId, QVR_AFE_PARAMS_t* xo_afe) {
  return readOfLine(xi_lineId, LineEnd::kFar, xo_afe);
}
