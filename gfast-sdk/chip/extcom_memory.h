// The lane units of a chip's inter-chip links (Extcom).
//
// A chip has two blocks of them, each behind a control word and a data word. A command in the control word
// selects a unit and one of its registers. The control word then carries it out: it writes the data word to
// the register, or reads the register into the data word.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gfast {

constexpr size_t EXTCOM_BLOCKS = 2;
constexpr uint32_t EXTCOM_CONTROL_ADDRESS(size_t block) {
  return block == 0 ? 0xA00B0140 : 0xA80B0140;
}
constexpr uint32_t EXTCOM_DATA_ADDRESS(size_t block) {
  return EXTCOM_CONTROL_ADDRESS(block) + 4;
}

// Units are numbered from EXTCOM_FIRST_UNIT in each block.
constexpr uint32_t EXTCOM_FIRST_UNIT = 0x10;
constexpr uint32_t EXTCOM_UNITS(size_t block) {
  return block == 0 ? 4 : 3;
}
constexpr size_t EXTCOM_LANES = EXTCOM_UNITS(0) + EXTCOM_UNITS(1);

// Registers of a unit. The first two are settings.
constexpr uint32_t EXTCOM_GENERATOR = 0x15;
constexpr uint32_t EXTCOM_CHECKER = 0x16;
constexpr uint32_t EXTCOM_CHECKER_COUNTING = 0x14;  // the checker's value while errors are counted
constexpr uint32_t EXTCOM_ERROR_COUNTER = 0x17;

// Values of the control word.
constexpr uint32_t EXTCOM_COMMAND(uint32_t unit, uint32_t registerNumber) {
  return unit << 24 | registerNumber << 16;
}
constexpr uint32_t EXTCOM_CARRY_OUT_READ = 1;
constexpr uint32_t EXTCOM_CARRY_OUT_WRITE = 3;

}  // namespace gfast
