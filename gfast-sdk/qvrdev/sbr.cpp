#include "qvrdev/sbr.h"

#include <cstdio>

#include "chip/boot_register.h"
#include "qvrdev/require.h"
#include "std/byte_order.h"

using namespace gfast;

QVR_retval_t gfast::readSBR(QVR_deviceId_t device, uint32_t& sbr) {
  uint8_t word[4] = {};
  const QVR_retval_t status = QVR_readmem(device, SBR_REG_ADDRESS, word, sizeof word);
  if (QVR_STATUS_OK(status)) {
    sbr = load_le32(word);
  }
  return status;
}

QVR_retval_t gfast::writeSBR(QVR_deviceId_t device, uint32_t sbr) {
  uint8_t word[4];
  store_le32(word, sbr);
  return QVR_writemem(device, SBR_REG_ADDRESS, word, sizeof word);
}

QVR_retval_t QVR_readModifyWriteSBR(QVR_deviceId_t xi_deviceId, uint32_t xi_mask, uint32_t xi_value) {
  uint32_t sbr = 0;
  const QVR_retval_t status = readSBR(xi_deviceId, sbr);
  return QVR_STATUS_ERROR(status) ? status : writeSBR(xi_deviceId, (sbr & ~xi_mask) | xi_value);
}

QVR_retval_t QVR_isValidFWState(QVR_deviceId_t xi_deviceId, QVR_fwState_t xi_expected) {
  requireDevice(xi_deviceId, kInvalidDeviceId);
  uint32_t sbr = 0;
  const QVR_retval_t status = readSBR(xi_deviceId, sbr);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  return SBR_FW_STATE(sbr) == xi_expected ? QVR_E_STATUS_OK : QVR_E_INVALID_FW_STATE;
}

QVR_retval_t QVR_checkDeviceReset() {
  uint32_t sbr = 0;
  const QVR_retval_t status = readSBR(QVR_K_DEVICE_ID_FIRST, sbr);
  if (QVR_STATUS_OK(status) && SBR_RESET_COUNTER(sbr) != 0) {
    std::printf("Reset detected...resetCounter=%u\n", SBR_RESET_COUNTER(sbr));
  }
  return status;
}
