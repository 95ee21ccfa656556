// Chip memory in any number of bytes. The chip transfers even numbers only, and lengths that a chip tells are
// not always even.
#pragma once

#include <qvr.h>

#include <cstdint>
#include <vector>

namespace gfast {

// Reads as many bytes as there are. When it fails, those not read stay as they were.
QVR_retval_t readCovered(QVR_deviceId_t device, uint32_t address, std::vector<uint8_t>& bytes);

// Writes the bytes; the byte behind an odd number of them is read first and stays what it is.
QVR_retval_t writeCovered(QVR_deviceId_t device, uint32_t address, std::vector<uint8_t> bytes);

}  // namespace gfast
