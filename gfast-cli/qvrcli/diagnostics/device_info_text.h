// A device-information image as text, field by field: for the session and for files.
#pragma once

#include <libcli.h>
#include <qvr.h>

#include <cstdint>
#include <cstdio>

#include "chip/device_information.h"

namespace gfast::console {

// The width of label and blanks in every report on a device.
constexpr uint8_t kReportLabelWidth = 40;

// The image is DEV_INF_SIZE bytes as the chip gives them. Words are shown as a big-endian processor loads
// them, unswapped, on every machine.
void printDeviceInfo(cli_def* cli, QVR_deviceId_t deviceId, const uint8_t* image);
void printDeviceInfoToFile(FILE* file, QVR_deviceId_t deviceId, const uint8_t* image);

}  // namespace gfast::console
