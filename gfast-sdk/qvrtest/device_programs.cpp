#include "qvrtest/device_programs.h"

#include "std/byte_order.h"

using namespace gfast;

namespace {

QVR_retval_t readSlot(const QVR_instruction_t& step, ProgramSlots& slots, const ProgramMemory& memory) {
  if (step.value >= slots.size()) {
    return QVR_E_INVALID_OPERATION;
  }
  uint8_t word[4];
  const QVR_retval_t status = memory.read(step.deviceId, step.addr, word, sizeof word);
  if (QVR_STATUS_OK(status)) {
    slots[step.value] = static_cast<int32_t>(load_be32(word));
  }
  return status;
}

QVR_retval_t writeValue(const QVR_instruction_t& step, const ProgramMemory& memory) {
  uint8_t word[4];
  store_be32(word, step.value);
  return memory.write(step.deviceId, step.addr, word, sizeof word);
}

QVR_retval_t playStep(const QVR_instruction_t& step, ProgramSlots& slots, const ProgramMemory& memory) {
  switch (step.memop) {
    case QVR_MEMOP_READMEM:
      return readSlot(step, slots, memory);
    case QVR_MEMOP_WRITEMEM:
      return writeValue(step, memory);
    default:
      return QVR_E_STATUS_OK;
  }
}

}  // namespace

const ProgramMemory gfast::kChipMemory{QVR_readmem, QVR_writemem};

ProgramSlots& gfast::testResults() {
  static ProgramSlots slots{};
  return slots;
}

QVR_retval_t gfast::playProgram(std::span<const QVR_instruction_t> program, ProgramSlots& slots,
                                const ProgramMemory& memory) {
  for (const QVR_instruction_t& step : program) {
    if (const QVR_retval_t status = playStep(step, slots, memory); QVR_STATUS_ERROR(status)) {
      return status;
    }
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_executeProgram(const QVR_instruction_t* xi_program, int xi_programLength) {
  const size_t length = xi_programLength > 0 ? static_cast<size_t>(xi_programLength) : 0;
  return playProgram({xi_program, length}, testResults(), kChipMemory);
}
