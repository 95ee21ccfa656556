// The lines of a device's record, for whoever indexes them with a number that came from the chip.
#pragma once

#include <qvr.h>

#include <algorithm>

namespace gfast {

// How many lines the record describes: none until the device has been read.
inline int linesOfRecord(const QVR_deviceInfo_t& record) {
  return std::min<int>(record.numberOfLines, QVR_K_MAX_LINES_PER_DEVICE);
}

}  // namespace gfast
