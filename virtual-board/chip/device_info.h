// The two blocks that identify a chip: the device-information image and the boot-stage block.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "virtual-board/chip/chip_config.h"
#include "virtual-board/chip/initialisation.h"

namespace gfast::board {

// ITU-T G.994.1 vendor id: country code, four letters, two bytes that the vendor chooses. The chips of the
// two sides come from different makers.
using VendorId = std::array<uint8_t, 8>;
constexpr VendorId kNetworkVendorId = {0xB5, 0x00, 'V', 'B', 'R', 'D', 0x00, 0x01};
constexpr VendorId kSubscriberVendorId = {0xB5, 0x00, 'V', 'H', 'O', 'M', 0x00, 0x02};

inline const VendorId& vendorIdOf(const FirmwareVersion& version) {
  return version.networkSide() ? kNetworkVendorId : kSubscriberVendorId;
}

struct DeviceIdentity {
  Firmware firmware;  // of the stage that runs
  MacAddress mac{};
  int temperature_c = 0;
  LineState lineState = LineState::kSelfTest;
  Initialisation initialisation;
};

// DEV_INF_SIZE bytes.
std::vector<uint8_t> deviceInfoImage(const DeviceIdentity& identity);

// B0_REGS_SIZE bytes.
std::vector<uint8_t> bootStageBlock(const DeviceIdentity& identity);

}  // namespace gfast::board
