// A chip's memory by subcarrier (chip/tones.h). It is computed when the host reads it, from the line's
// spectrum and loading, so that bits, SNR and levels agree with each other and with the counters.
#pragma once

#include <cstdint>
#include <span>

#include "virtual-board/base/address_space.h"
#include "virtual-board/line/line_insight.h"

namespace gfast::board {

// An area of chip memory. It reads as zeros outside of showtime.
struct ToneArea {
  uint32_t address;
  uint32_t length;
  uint32_t entrySize;
  // A read of a window returns two guard words and then the bytes at its address.
  enum class Kind : uint8_t { kTable, kWindow } kind;
  void (*store)(const LineInsight& line, uint32_t entry, uint8_t* bytes);

  Bytes read(const LineInsight& line, uint32_t offset, uint32_t partLength) const;
};
std::span<const ToneArea> toneAreas();

// A modem's response to a request for a block of a vector of test parameters, as on the wire.
Bytes pmdVectorBlock(const LineInsight& line, std::span<const uint8_t> request);

}  // namespace gfast::board
