#include "virtual-board/chip/extcom.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "std/byte_order.h"

namespace gfast::board {

namespace {

Bytes bigEndian(uint32_t value) {
  Bytes bytes(4);
  store_be32(bytes.data(), value);
  return bytes;
}

}  // namespace

void Extcom::map(AddressSpace& memory) {
  for (size_t block = 0; block < blocks_.size(); block++) {
    mapBlock(memory, block);
  }
}

// The data word is mapped first: when one write covers both words, the value must be there before the control
// word uses it.
void Extcom::mapBlock(AddressSpace& memory, size_t block) {
  memory.add({EXTCOM_DATA_ADDRESS(block),
              4,
              [this, block] { return bigEndian(blocks_[block].data); },
              [this, block](const Bytes& word) { blocks_[block].data = load_be32(word.data()); },
              {}});
  memory.add({EXTCOM_CONTROL_ADDRESS(block),
              4,
              [this, block] { return bigEndian(blocks_[block].control); },
              [this, block](const Bytes& word) { controlWritten(block, load_be32(word.data())); },
              {}});
}

void Extcom::setErrorRate(size_t lane, double errors_per_s) {
  units_[lane].errors_per_s = errors_per_s;
}

void Extcom::forget() {
  blocks_ = {};
  for (Unit& unit : units_) {
    unit = {unit.errors_per_s};
  }
}

void Extcom::controlWritten(size_t block, uint32_t word) {
  Block& self = blocks_[block];
  self.control = word;
  if (word != EXTCOM_CARRY_OUT_READ && word != EXTCOM_CARRY_OUT_WRITE) {
    self.command = word;
    return;
  }
  const auto selected = select(block, self.command);
  if (!selected) {
    return;
  }
  if (word == EXTCOM_CARRY_OUT_WRITE) {
    store(*selected, self.data);
  } else {
    self.data = load(*selected);
  }
}

std::optional<Extcom::Register> Extcom::select(size_t block, uint32_t command) {
  const size_t firstLane = block == 0 ? 0 : EXTCOM_UNITS(0);
  for (uint32_t unit = 0; unit < EXTCOM_UNITS(block); unit++) {
    for (const uint32_t number : {EXTCOM_GENERATOR, EXTCOM_CHECKER, EXTCOM_ERROR_COUNTER}) {
      if (command == EXTCOM_COMMAND(EXTCOM_FIRST_UNIT + unit, number)) {
        return Register{units_[firstLane + unit], number};
      }
    }
  }
  return std::nullopt;
}

void Extcom::store(const Register& target, uint32_t value) {
  Unit& unit = target.unit;
  if (target.number == EXTCOM_GENERATOR) {
    unit.generator = value;
  } else if (target.number == EXTCOM_CHECKER) {
    if (value == EXTCOM_CHECKER_COUNTING && unit.checker != EXTCOM_CHECKER_COUNTING) {
      unit.countingSince = agenda_.now();
    }
    unit.checker = value;
  }
}

uint32_t Extcom::load(const Register& source) const {
  const Unit& unit = source.unit;
  if (source.number == EXTCOM_GENERATOR) {
    return unit.generator;
  }
  if (source.number == EXTCOM_CHECKER) {
    return unit.checker;
  }
  if (unit.checker != EXTCOM_CHECKER_COUNTING) {
    return 0;
  }
  // Hosts read a signed number in which -1 means not measured.
  constexpr double most = std::numeric_limits<int32_t>::max();
  return static_cast<uint32_t>(
      std::min(std::floor(unit.errors_per_s * (agenda_.now() - unit.countingSince)), most));
}

}  // namespace gfast::board
