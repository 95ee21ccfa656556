// Procedures that the chips define as sequences of register reads and writes, and the interpreter that plays
// them.
#pragma once

#include <qvr.h>

#include <array>
#include <cstddef>
#include <span>

namespace gfast {

// Counters that a device has room for in the results, and those of all devices that a program addresses.
constexpr size_t kExtcomCountersPerDevice =
    size_t{QVR_K_NUMBER_OF_EXTCOM_PORTS_PER_DEVICE} * QVR_K_NUMBER_OF_LANES_PER_EXTCOM_PORT;
constexpr size_t kProgramSlots = QVR_K_MAX_DEVICES_IN_CLUSTER * kExtcomCountersPerDevice;

using ProgramSlots = std::array<int32_t, kProgramSlots>;

// What a program is played against: chip memory, a word of four bytes at a time.
struct ProgramMemory {
  QVR_retval_t (*read)(QVR_deviceId_t deviceId, uint32_t address, void* buffer, uint32_t numBytes);
  QVR_retval_t (*write)(QVR_deviceId_t deviceId, uint32_t address, const void* buffer, uint32_t numBytes);
};

// Plays the steps in order up to the first that fails, and returns its code. Words are transferred big-endian
// on every machine. A step that neither reads nor writes does nothing; one that reads into a slot that does
// not exist returns QVR_E_INVALID_OPERATION.
QVR_retval_t playProgram(std::span<const QVR_instruction_t> program, ProgramSlots& slots,
                         const ProgramMemory& memory);

// The chips' own memory.
extern const ProgramMemory kChipMemory;

// The module's slots, which QVR_executeProgram fills.
ProgramSlots& testResults();

}  // namespace gfast
