// Resetting chips, and moving the system between line state and system configuration state.

#include <qvr.h>

#include <chrono>

#include "chip/boot_register.h"
#include "chip/registers.h"
#include "clock/waiting.h"
#include "qvrdev/sbr.h"
#include "qvrlog/qvrlog.h"
#include "std/bits.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

// The boot ROM needs bits 4 and 9 set at every reset.
constexpr uint32_t kSbrOfEveryReboot = 0x210;
constexpr uint32_t kSbrResetCounters = MASK(SBR_RESET_COUNTER) | MASK(SBR_BOOT_RESET_COUNTER);

constexpr std::chrono::seconds kResetPollInterval{1};
constexpr std::chrono::milliseconds kConfigurationPollInterval{250};
constexpr int kMostConfigurationPolls = 41;

// Changes the boot register so that the chip's next start ends in this stage; false for an unknown stage.
bool chooseStage(uint32_t& sbr, QVR_fwState_t stage) {
  switch (stage) {
    case FW_B0:
      sbr |= MASK(SBR_DISABLE_FLASH);
      return true;
    case FW_B1:
      sbr |= MASK(SBR_DISABLE_FLASH_OVERRIDE);
      return true;
    case FW_APP:
      sbr &= ~(MASK(SBR_DISABLE_FLASH) | MASK(SBR_DISABLE_FLASH_OVERRIDE));
      return true;
    default:
      return false;
  }
}

QVR_retval_t writeWord(QVR_deviceId_t device, uint32_t address, uint32_t value) {
  uint8_t word[4];
  store_le32(word, value);
  return QVR_writemem(device, address, word, sizeof word);
}

// The chip resets during the second write, so the results mean nothing.
void resetChip(QVR_deviceId_t device) {
  writeWord(device, PLL_MUX_REG_ADDRESS, 0);
  writeWord(device, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
}

// There is no limit: a chip may be away for as long as its repair takes. But the program may end the wait.
QVR_retval_t awaitReset(QVR_deviceId_t device, bool untilIdle) {
  while (waitWhileAllowed(kResetPollInterval)) {
    QVR_deviceInfo_t info;
    const QVR_retval_t status = QVR_getDeviceInfo(device, &info);
    if (QVR_STATUS_OK(status) && (!untilIdle || info.lineState[0] == LS_IDLE)) {
      return status;
    }
  }
  return QVR_E_TIMEOUT_ERROR;
}

QVR_retval_t awaitLineState(QVR_deviceId_t device) {
  for (int poll = 0; poll < kMostConfigurationPolls && waitWhileAllowed(kConfigurationPollInterval); poll++) {
    QVR_deviceInfo_t info;
    if (QVR_STATUS_OK(QVR_getDeviceInfo(device, &info)) && info.configState == CONFIG_STATE_LINE) {
      return QVR_E_STATUS_OK;
    }
  }
  return QVR_E_ERROR;
}

QVR_retval_t endConfiguration() {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_LAST; device >= QVR_K_DEVICE_ID_FIRST; device--) {
    writeWord(device, VIRT_ADDR_USER_ACTIVATION, 0);  // the write itself is the request
  }
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    if (const QVR_retval_t status = awaitLineState(device); QVR_STATUS_ERROR(status)) {
      return status;
    }
  }
  return QVR_E_STATUS_OK;
}

}  // namespace

QVR_retval_t QVR_rebootDevice(QVR_deviceId_t xi_deviceId, QVR_fwState_t xi_nextState) {
  uint32_t sbr = 0;
  QVR_retval_t status = readSBR(xi_deviceId, sbr);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  sbr = (sbr | kSbrOfEveryReboot) & ~kSbrResetCounters;
  if (!chooseStage(sbr, xi_nextState)) {
    return QVR_E_ERROR;
  }
  status = writeSBR(xi_deviceId, sbr);
  if (QVR_STATUS_OK(status)) {
    resetChip(xi_deviceId);
  }
  return status;
}

QVR_retval_t QVR_reset(QVR_deviceId_t xi_deviceId, BOOL xi_reboot) {
  return QVR_rebootDevice(xi_deviceId, xi_reboot == TRUE ? FW_APP : FW_B0);
}

QVR_retval_t QVR_restartDevice(QVR_deviceId_t xi_deviceId, BOOL xi_waitForConfig) {
  constexpr uint32_t kActivationState = MASK(SBR_USER_ACTIVATION_STATE);
  const bool waitForConfig = xi_waitForConfig == TRUE;
  uint32_t sbr = 0;
  QVR_retval_t status = readSBR(xi_deviceId, sbr);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  if ((sbr & kActivationState) != 0) {
    return waitForConfig ? QVR_E_STATUS_OK : endConfiguration();
  }
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    status = QVR_readModifyWriteSBR(device, kActivationState, waitForConfig ? kActivationState : 0);
    if (QVR_STATUS_ERROR(status)) {
      TRACE_LOG(QVRLOG_WARNING, "Failed on ReadModifyWrite of SBR\n");
      return status;
    }
  }
  QVR_reset(xi_deviceId, TRUE);
  status = awaitReset(xi_deviceId, waitForConfig);
  if (status == QVR_E_TIMEOUT_ERROR) {
    return status;  // the chip is still away
  }
  QVR_rediscoverDevices();
  return status;
}
