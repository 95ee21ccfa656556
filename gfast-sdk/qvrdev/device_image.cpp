#include "qvrdev/device_image.h"

#include <cstring>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "std/bits.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr size_t kStoredWordSize = 4;
constexpr uint32_t kBitsOfLinkState = 4;
constexpr size_t kDateWords = 6;
constexpr size_t kDateLength = sizeof(QVR_dateStr_t) - 1;
constexpr size_t kTimeLength = sizeof(QVR_timeStr_t) - 1;
constexpr uint8_t kLinesOfChip = 1;

// Firmware texts come with two characters a word, in its bits 0-7 and 16-23.
void copyTextWords(char* text, const uint8_t* words, size_t count) {
  for (size_t i = 0; i < count; i++) {
    const uint32_t word = load_le32(words + i * kStoredWordSize);
    text[2 * i] = static_cast<char>(word & 0xFFU);
    text[2 * i + 1] = static_cast<char>((word >> 16) & 0xFFU);
  }
}

QVR_versionNumber_t versionOf(uint32_t word) {
  return {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word >> 16),
          static_cast<uint8_t>(word >> 24)};
}

// Chipsets of the network side; the others are at the subscriber side.
bool isDistributionPoint(uint8_t chipset) {
  return chipset == 1 || chipset == 3;
}

void fillIdentity(QVR_deviceInfo_t& record, const DeviceImages& images) {
  const uint8_t* info = images.info.data();
  record.devInfVersion = load_le32(info + DEV_INF_VERSION);
  record.firmwareVersion = versionOf(load_le32(info + DEV_INF_FIRMWARE_VERSION));
  record.isDPdevice = isDistributionPoint(record.firmwareVersion.versionChipset) ? TRUE : FALSE;
  copyTextWords(record.date, info + DEV_INF_DATE, kDateWords);
  record.date[kDateLength] = '\0';
  copyTextWords(record.time, info + DEV_INF_TIME, 1);
  record.time[kTimeLength] = '\0';
  std::memcpy(record.mainDFEMacAddress, images.b0Regs.data() + B0_REGS_MAC_ADDRESS,
              sizeof record.mainDFEMacAddress);
  std::memcpy(record.vendorId, info + DEV_INF_VENDOR_ID, sizeof record.vendorId);
}

void fillLine(QVR_deviceInfo_t& record, QVR_deviceId_t device, uint8_t line, const DeviceImages& images) {
  const uint8_t* info = images.info.data() + line * kStoredWordSize;
  const uint32_t linkStates = load_le32(images.b0Regs.data() + B0_REGS_LINK_STATES);
  const uint32_t lastSignal = load_le32(info + DEV_INF_LAST_SIGNAL);
  record.lineState[line] = static_cast<QVR_lineState_t>((linkStates >> (line * kBitsOfLinkState)) & 0xFU);
  record.lineStartupTime[line] = load_le32(info + DEV_INF_LINK_STARTUP_TIME);
  record.lineIDs[line] = static_cast<uint8_t>(device + line);
  record.initsFcause[line] = load_le32(info + DEV_INF_INIT_FAILURE_CAUSE);
  record.initLastSignalds[line] = static_cast<uint8_t>(lastSignal);
  record.initLastSignalus[line] = static_cast<uint8_t>(lastSignal >> 16);
}

}  // namespace

void gfast::fillRecord(QVR_deviceInfo_t& record, QVR_deviceId_t device, const DeviceImages& images) {
  record.configState =
      (images.sbr & MASK(SBR_USER_ACTIVATION_STATE)) != 0 ? CONFIG_STATE_SYSTEM : CONFIG_STATE_LINE;
  record.deviceState = SS_RUN_STATE;
  record.fwState = static_cast<QVR_fwState_t>(SBR_FW_STATE(images.sbr));
  fillIdentity(record, images);
  record.numberOfLines = kLinesOfChip;
  for (uint8_t line = 0; line < kLinesOfChip; line++) {
    fillLine(record, device, line, images);
  }
  record.temperatureInCelcius = load_le32(images.info.data() + DEV_INF_TEMPERATURE);
}
