// The lines of the system: which device carries each, and under which index.
#pragma once

#include <qvr.h>

struct QVR_lineDescriptor_t {
  QVR_deviceId_t deviceId;
  uint32_t narrowLineID;  // index of the line within its device
};

// The line's descriptor. A line id out of range is assertion 200.
const QVR_lineDescriptor_t& QVR_lineDescriptorForLine(QVR_lineId_t xi_lineId);
