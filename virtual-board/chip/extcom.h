// A chip's inter-chip links (Extcom): each lane has a unit that checks a pseudo-random sequence and counts
// its errors. The registers belong to the links' own controller. It is big-endian, so their words are too.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "chip/extcom_memory.h"
#include "virtual-board/base/address_space.h"
#include "virtual-board/base/agenda.h"

namespace gfast::board {

class Extcom {
 public:
  explicit Extcom(const Agenda& agenda) : agenda_(agenda) {}
  Extcom(const Extcom&) = delete;
  Extcom& operator=(const Extcom&) = delete;

  void map(AddressSpace& memory);

  // From now on so many errors a second arrive on the lane.
  void setErrorRate(size_t lane, double errors_per_s);

  // After a reset: the settings and the counts are gone. The lanes' error rates stay.
  void forget();

 private:
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
  struct Register {
    Unit& unit;
    uint32_t number;
  };

  void mapBlock(AddressSpace& memory, size_t block);
  void controlWritten(size_t block, uint32_t word);
  // Empty: no such unit or register.
  std::optional<Register> select(size_t block, uint32_t command);
  void store(const Register& target, uint32_t value);
  uint32_t load(const Register& source) const;

  const Agenda& agenda_;
  std::array<Unit, EXTCOM_LANES> units_;  // of the first block, then of the second
  std::array<Block, EXTCOM_BLOCKS> blocks_;
};

}  // namespace gfast::board
