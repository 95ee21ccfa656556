// The two blocks that say who a chip is: the device-information image and the boot-stage block.
#pragma once

#include <cstdint>
#include <vector>

#include "board_config.h"

struct DeviceIdentity {
  Firmware firmware;  // of the stage that runs
  MacAddress mac{};
  int temperature_c = 0;
  LineState lineState = LineState::SelfTest;
  uint32_t startupTime_ms = 0;
  uint32_t handshakeTime_ms = 0;
  uint32_t initFailureCause = 0;
};

// DEV_INF_SIZE bytes.
std::vector<uint8_t> deviceInfoImage(const DeviceIdentity& identity);

// B0_REGS_SIZE bytes.
std::vector<uint8_t> bootStageBlock(const DeviceIdentity& identity);
