#include "virtual-board/chip/device_info.h"

#include <gfast_api.h>

#include <algorithm>
#include <string_view>

#include "chip/device_information.h"
#include "chip/registers.h"
#include "std/byte_order.h"

namespace gfast::board {

namespace {

constexpr uint32_t kDevInfVersion = 4;

// Two characters a word, in bits 0-7 and 16-23.
void storeText(uint8_t* to, size_t words, std::string_view text) {
  const auto at = [text](size_t i) { return i < text.size() ? static_cast<uint8_t>(text[i]) : uint32_t{0}; };
  for (size_t i = 0; i < words; i++) {
    store_le32(to + 4 * i, at(2 * i) | (at(2 * i + 1) << 16));
  }
}

}  // namespace

std::vector<uint8_t> deviceInfoImage(const DeviceIdentity& identity) {
  std::vector<uint8_t> image(DEV_INF_SIZE);
  uint8_t* const p = image.data();
  const FirmwareVersion& version = identity.firmware.version;
  store_le32(p + DEV_INF_VERSION, kDevInfVersion);
  p[DEV_INF_FIRMWARE_VERSION] = version.profile;
  p[DEV_INF_FIRMWARE_VERSION + 1] = version.rc;
  p[DEV_INF_FIRMWARE_VERSION + 2] = version.ga;
  p[DEV_INF_FIRMWARE_VERSION + 3] = version.chipset;
  storeText(p + DEV_INF_DATE, 6, identity.firmware.date);
  storeText(p + DEV_INF_TIME, 1, identity.firmware.time);
  const Initialisation& initialisation = identity.initialisation;
  store_le32(p + DEV_INF_LINK_STARTUP_TIME, initialisation.startup_ms());
  store_le32(p + DEV_INF_GHS_TIMES, initialisation.handshake_ms());
  p[DEV_INF_LAST_SIGNAL] = static_cast<uint8_t>(initialisation.lastDownstream());
  p[DEV_INF_LAST_SIGNAL + 2] = static_cast<uint8_t>(initialisation.lastUpstream());
  store_le32(p + DEV_INF_INIT_FAILURE_CAUSE, initialisation.failureCause());
  store_le32(p + DEV_INF_TEMPERATURE, static_cast<uint32_t>(identity.temperature_c));
  // Country code, vendor code and revision each have a word of their own, two of them its upper half.
  const VendorId& vendor = vendorIdOf(version);
  store_le32(p + DEV_INF_VENDOR_ID, uint32_t{load_be16(vendor.data())} << 16);
  store_le32(p + DEV_INF_VENDOR_ID + 4, load_be32(vendor.data() + 2));
  store_le32(p + DEV_INF_VENDOR_ID + 8, uint32_t{load_be16(vendor.data() + 6)} << 16);
  return image;
}

std::vector<uint8_t> bootStageBlock(const DeviceIdentity& identity) {
  std::vector<uint8_t> block(B0_REGS_SIZE);
  std::copy(identity.mac.begin(), identity.mac.end(), block.begin() + B0_REGS_MAC_ADDRESS);
  store_le32(block.data() + B0_REGS_LINK_STATES, static_cast<uint32_t>(identity.lineState));
  return block;
}

}  // namespace gfast::board
