// The chip's memory by subcarrier (gfast-sdk/chip/tones.h), as it computes it when the host reads it: all from
// the line's spectrum and loading, so that bits, SNR and levels agree with each other and with the counters.
#pragma once

#include <cstdint>
#include <span>

#include "virtual-board/base/address_space.h"
#include "virtual-board/line/line_insight.h"

namespace gfast::board {

// An area of chip memory, of the chip's only line. Outside showtime all is zero.
struct ToneArea {
  uint32_t address;
  uint32_t length;
  uint32_t entrySize;
  // Window: every read is a look of its own, two guard words and then what lies at its address.
  enum class Kind : uint8_t { kTable, kWindow } kind;
  void (*store)(const LineInsight& line, uint32_t entry, uint8_t* bytes);

  // A part of the area.
  Bytes read(const LineInsight& line, uint32_t offset, uint32_t partLength) const;
};
std::span<const ToneArea> toneAreas();

// A modem's answer to a request for a block of a test parameter's vector, as on the wire.
Bytes pmdVectorBlock(const LineInsight& line, std::span<const uint8_t> request);

}  // namespace gfast::board
