// Vectoring coefficients as they are seen through a window of 256 bytes: two guard words, then 248 bytes.
#pragma once

#include "support/driver_script.h"

using namespace gfast;

// Reads the block at the address, which begins with this data.
inline Script readsCoefficientBlock(int device, uint32_t address, const Bytes& data,
                                    uint32_t secondGuard = 9) {
  Bytes block = words({9, secondGuard}) + data;
  block.resize(256, 0xEE);
  return reads(device, address, block);
}

// An area through as many blocks as it takes.
inline Script readsCoefficients(int device, uint32_t address, const Bytes& area) {
  return inPieces(area, 248, [&](uint32_t offset, const Bytes& piece) {
    return readsCoefficientBlock(device, address + offset, piece);
  });
}
