#include "qvrtest/extcom.h"

#include <initializer_list>
#include <span>

using namespace gfast;

namespace {

// A lane unit behind its block's pair of words.
struct LaneUnit {
  uint32_t control;
  uint32_t data;
  uint32_t unit;
};

constexpr LaneUnit kLaneUnits[] = {
    {0xA00B0140, 0xA00B0144, 0x10}, {0xA00B0140, 0xA00B0144, 0x11}, {0xA00B0140, 0xA00B0144, 0x12},
    {0xA00B0140, 0xA00B0144, 0x13}, {0xA80B0140, 0xA80B0144, 0x10}, {0xA80B0140, 0xA80B0144, 0x11},
    {0xA80B0140, 0xA80B0144, 0x12},
};
constexpr size_t kUnitsPerDevice = std::size(kLaneUnits);

// Registers of a unit.
constexpr uint32_t kFirstConfigured = 0x15;
constexpr uint32_t kSecondConfigured = 0x16;
constexpr uint32_t kErrorCounter = 0x17;

// What the control word does with the command before it.
constexpr uint32_t kCarryOutRead = 1;
constexpr uint32_t kCarryOutWrite = 3;

constexpr uint32_t commandFor(const LaneUnit& unit, uint32_t registerNumber) {
  return unit.unit << 24 | registerNumber << 16;
}

// A program as it is put together, step by step.
template <size_t Steps>
struct Draft {
  std::array<QVR_instruction_t, Steps> steps{};
  size_t length = 0;

  constexpr void add(QVR_memop_t operation, QVR_deviceId_t device, uint32_t address, uint32_t value) {
    steps.at(length++) = {operation, device, address, value};
  }

  constexpr void configure(QVR_deviceId_t device, uint32_t registerNumber,
                           std::initializer_list<uint32_t> values) {
    for (const LaneUnit& unit : kLaneUnits) {
      for (const uint32_t value : values) {
        add(QVR_MEMOP_WRITEMEM, device, unit.control, commandFor(unit, registerNumber));
        add(QVR_MEMOP_WRITEMEM, device, unit.data, value);
        add(QVR_MEMOP_WRITEMEM, device, unit.control, kCarryOutWrite);
      }
    }
  }

  constexpr void readErrors(QVR_deviceId_t device, std::span<const uint32_t, kUnitsPerDevice> slots) {
    for (size_t i = 0; i < kUnitsPerDevice; i++) {
      add(QVR_MEMOP_WRITEMEM, device, kLaneUnits[i].control, commandFor(kLaneUnits[i], kErrorCounter));
      add(QVR_MEMOP_WRITEMEM, device, kLaneUnits[i].control, kCarryOutRead);
      add(QVR_MEMOP_READMEM, device, kLaneUnits[i].data, slots[i]);
    }
  }
};

constexpr auto draftStart() {
  Draft<kStartPrbsSteps> draft;
  for (const QVR_deviceId_t device : {0, 1, 2, 3}) {
    draft.configure(device, kFirstConfigured, {0, 4});
  }
  // The last device is configured twice, as the chips' own program has it.
  for (const QVR_deviceId_t device : {0, 1, 2, 3, 3}) {
    draft.configure(device, kSecondConfigured, {0, 4, 0x14});
  }
  return draft;
}

// Where the counters of a device go. Those of device 2 go, with the lanes exchanged, to the places of device
// 1, as the chips' own program has it.
constexpr uint32_t kErrorSlots[QVR_K_MAX_DEVICES_IN_CLUSTER][kUnitsPerDevice] = {
    {0, 1, 2, 3, 4, 5, 6},
    {12, 13, 14, 15, 16, 17, 18},
    {13, 12, 15, 14, 17, 16, 19},
    {36, 37, 38, 39, 40, 41, 42},
};

constexpr auto draftResults() {
  Draft<kPrbsResultsSteps> draft;
  for (const QVR_deviceId_t device : {0, 1, 2, 3}) {
    draft.readErrors(device, kErrorSlots[device]);
  }
  return draft;
}

static_assert(draftStart().length == kStartPrbsSteps);
static_assert(draftResults().length == kPrbsResultsSteps);

constexpr int32_t kNotMeasured = -1;

}  // namespace

constexpr std::array<QVR_instruction_t, kStartPrbsSteps> gfast::startPRBSTestProgram = draftStart().steps;
constexpr std::array<QVR_instruction_t, kPrbsResultsSteps> gfast::getPRBSTestResultsProgram =
    draftResults().steps;

QVR_retval_t gfast::collectExtcomErrors(ProgramSlots& slots, const ProgramMemory& memory,
                                        QVR_extcomPortErrors_t& results) {
  slots.fill(kNotMeasured);
  const QVR_retval_t status = playProgram(getPRBSTestResultsProgram, slots, memory);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  const int32_t* slot = slots.data();
  for (auto& device : results.extcomPortErrorsOnDevice) {
    for (auto& port : device) {
      for (int32_t& lane : port) {
        lane = *slot++;
      }
    }
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_startExtcomConnectivityTest() {
  return playProgram(startPRBSTestProgram, testResults(), kChipMemory);
}

QVR_retval_t QVR_getExtcomConnectivityTestResults(QVR_extcomPortErrors_t* xo_testResults) {
  return collectExtcomErrors(testResults(), kChipMemory, *xo_testResults);
}
