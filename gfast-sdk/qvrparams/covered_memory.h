// Reads and writes any number of bytes of chip memory. The chip transfers only even numbers of bytes, and
// lengths that a chip reports may be odd.
#pragma once

#include <qvr.h>

#include <cstdint>
#include <vector>

namespace gfast {

// Reads as many bytes as `bytes` has. If it fails, the bytes that were not read stay as they were.
QVR_retval_t readCovered(QVR_deviceId_t device, uint32_t address, std::vector<uint8_t>& bytes);

// Writes the bytes. If their number is odd, the byte behind them is read first and written back unchanged.
QVR_retval_t writeCovered(QVR_deviceId_t device, uint32_t address, std::vector<uint8_t> bytes);

}  // namespace gfast
