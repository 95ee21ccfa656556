// The chips' test memory: a symbol that a line's processor sends again and again, and one that it captures.
//
// A symbol is 4096 samples of 16 bits, in time order and little-endian. Only one chip sends at a time: the
// one whose transmit buffer was written last. Its own receiver gets the signal through the hybrid, the other
// one through the loop.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "virtual-board/base/address_space.h"
#include "virtual-board/base/agenda.h"
#include "virtual-board/chip/chip.h"
#include "virtual-board/line/copper_line.h"
#include "virtual-board/measured/front_end.h"
#include "virtual-board/measured/spectrum.h"

namespace gfast::board {

class TestMemory {
 public:
  // Maps the test memory of both chips.
  TestMemory(const std::array<Chip*, kEnds>& chips, const CopperLine& line, Agenda& agenda,
             const LoopConfig& loop, uint32_t seed);
  TestMemory(const TestMemory&) = delete;
  TestMemory& operator=(const TestMemory&) = delete;

 private:
  struct End {
    Chip* chip;
    FrontEnd frontEnd;
    Bytes transmit;
    Bytes captured;
    uint32_t requested = 0;  // the snapshot counter: 0 when the symbol is captured
    Agenda::Ticket due = Agenda::kNone;
  };

  void map(size_t end);
  void forget(size_t end);
  void request(size_t end, uint32_t count);
  void capture(size_t end);
  bool active(size_t end) const;
  std::vector<double> arriving(size_t end);
  std::vector<double> throughLoop(const std::vector<double>& signal);

  std::array<End, kEnds> ends_;
  const CopperLine& line_;
  Agenda& agenda_;
  const LoopConfig loop_;
  Spectrum response_;                  // of the loop, by subcarrier; empty until needed
  std::optional<Cable> measured_;      // whose response it is
  std::optional<size_t> transmitter_;  // whose signal is on the pair
};

}  // namespace gfast::board
