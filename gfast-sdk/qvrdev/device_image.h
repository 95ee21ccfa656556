// What a chip says about itself, and its conversion into a device record.
#pragma once

#include <qvr.h>

#include <array>

#include "chip/device_information.h"
#include "chip/registers.h"

namespace gfast {

// As read from the chip.
struct DeviceImages {
  uint32_t sbr;  // software boot register, as a value
  std::array<uint8_t, DEV_INF_SIZE> info;
  std::array<uint8_t, B0_REGS_SIZE> b0Regs;  // boot-stage registers
};

// Fills what the images tell into the record and leaves the rest of it as it was.
void fillRecord(QVR_deviceInfo_t& record, QVR_deviceId_t device, const DeviceImages& images);

}  // namespace gfast
