// The two blocks that identify a chip: the device-information image and the boot-stage block.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "virtual-board/chip/chip_config.h"
#include "virtual-board/chip/initialisation.h"

namespace gfast::board {

// ITU-T G.994.1 vendor id: country code, four letters, two bytes that the vendor chooses.
constexpr std::array<uint8_t, 8> kVendorId = {0xB5, 0x00, 'V', 'B', 'R', 'D', 0x00, 0x01};

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
