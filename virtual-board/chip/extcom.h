// A chip's inter-chip links (Extcom): lane units that check a pseudo-random sequence, behind two pairs of
// registers.
//
// A pair is a control word and a data word. A command, (unit << 24) | (register << 16), chooses one of a
// unit's registers; 3 then writes the data word to it, and 1 reads it into the data word. The registers are
// those of the links' own controller, which is big-endian: a word lies in memory with its most significant
// byte first.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "virtual-board/base/address_space.h"
#include "virtual-board/base/agenda.h"

namespace gfast::board {

// Lanes of a chip.
constexpr size_t kExtcomLanes = 7;

class Extcom {
 public:
  explicit Extcom(const Agenda& agenda) : agenda_(agenda) {}
  Extcom(const Extcom&) = delete;
  Extcom& operator=(const Extcom&) = delete;

  void map(AddressSpace& memory);

  // So many errors a second arrive on the lane from now on.
  void setErrorRate(size_t lane, double errors_per_s);

  // As after a reset: nothing is configured or counted.
  void forget();

 private:
  // What checks one lane. Its counter runs from when the checker was told to count.
  struct Unit {
    double errors_per_s = 0;
    uint32_t generator = 0;
    uint32_t checker = 0;
    double countingSince = 0;
  };
  struct Block {
    uint32_t control = 0;
    uint32_t data = 0;
    uint32_t command = 0;
  };

  void mapBlock(AddressSpace& memory, size_t block);
  void controlWritten(size_t block, uint32_t word);
  Unit* unitOf(size_t block);
  void store(Unit& unit, uint8_t reg, uint32_t value);
  uint32_t load(const Unit& unit, uint8_t reg) const;

  const Agenda& agenda_;
  std::array<Unit, kExtcomLanes> units_;  // the first pair's, then the second's
  std::array<Block, 2> blocks_;
};

}  // namespace gfast::board
