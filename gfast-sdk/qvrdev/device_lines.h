// The number of lines in a device's record. It limits an index that came from a chip.
#pragma once

#include <qvr.h>

#include <algorithm>

namespace gfast {

// How many lines the record describes: none until the device has been read.
inline int linesOfRecord(const QVR_deviceInfo_t& record) {
  return std::min<int>(record.numberOfLines, QVR_K_MAX_LINES_PER_DEVICE);
}

}  // namespace gfast
