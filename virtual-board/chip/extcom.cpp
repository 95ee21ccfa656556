#include "virtual-board/chip/extcom.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "std/byte_order.h"

namespace gfast::board {

namespace {

struct Registers {
  uint32_t control;
  uint32_t data;
  uint8_t units;  // from kFirstUnit up
  size_t firstLane;
};
constexpr Registers kBlocks[] = {{0xA00B0140, 0xA00B0144, 4, 0}, {0xA80B0140, 0xA80B0144, 3, 4}};
constexpr uint8_t kFirstUnit = 0x10;

constexpr uint8_t kGenerator = 0x15;
constexpr uint8_t kChecker = 0x16;
constexpr uint8_t kErrors = 0x17;
constexpr uint32_t kChecking = 0x14;  // of the checker: enabled, and counting

constexpr uint32_t kRead = 1;
constexpr uint32_t kWrite = 3;

uint8_t unitNumber(uint32_t command) {
  return static_cast<uint8_t>(command >> 24);
}

uint8_t registerNumber(uint32_t command) {
  return static_cast<uint8_t>(command >> 16);
}

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

// The data word comes first: a write of both words is a value and then what to do with it.
void Extcom::mapBlock(AddressSpace& memory, size_t block) {
  memory.add({kBlocks[block].data,
              4,
              [this, block] { return bigEndian(blocks_[block].data); },
              [this, block](const Bytes& word) { blocks_[block].data = load_be32(word.data()); },
              {}});
  memory.add({kBlocks[block].control,
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
  if (word != kRead && word != kWrite) {
    self.command = word;
    return;
  }
  Unit* const unit = unitOf(block);
  if (unit == nullptr) {
    return;
  }
  const uint8_t reg = registerNumber(self.command);
  if (word == kWrite) {
    store(*unit, reg, self.data);
  } else {
    self.data = load(*unit, reg);
  }
}

// Whose register the last command chose; none: no such unit or register.
Extcom::Unit* Extcom::unitOf(size_t block) {
  const uint32_t command = blocks_[block].command;
  const Registers& place = kBlocks[block];
  const uint8_t unit = unitNumber(command);
  const uint8_t reg = registerNumber(command);
  const bool known = unit >= kFirstUnit && unit < kFirstUnit + place.units && reg >= kGenerator &&
                     reg <= kErrors && (command & 0xFFFF) == 0;
  return known ? &units_[place.firstLane + unit - kFirstUnit] : nullptr;
}

void Extcom::store(Unit& unit, uint8_t reg, uint32_t value) {
  if (reg == kGenerator) {
    unit.generator = value;
  } else if (reg == kChecker) {
    if (value == kChecking && unit.checker != kChecking) {
      unit.countingSince = agenda_.now();
    }
    unit.checker = value;
  }
}

uint32_t Extcom::load(const Unit& unit, uint8_t reg) const {
  if (reg == kGenerator) {
    return unit.generator;
  }
  if (reg == kChecker) {
    return unit.checker;
  }
  if (unit.checker != kChecking) {
    return 0;
  }
  // Read as a signed number, of which -1 means not measured.
  constexpr double most = std::numeric_limits<int32_t>::max();
  return static_cast<uint32_t>(
      std::min(std::floor(unit.errors_per_s * (agenda_.now() - unit.countingSince)), most));
}

}  // namespace gfast::board
