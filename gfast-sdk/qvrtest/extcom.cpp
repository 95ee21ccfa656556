#include "qvrtest/extcom.h"

#include <initializer_list>
#include <span>

#include "chip/extcom_memory.h"

using namespace gfast;

namespace {

// A lane unit behind its block's pair of words.
struct LaneUnit {
  uint32_t control;
  uint32_t data;
  uint32_t unit;
};

constexpr size_t kUnitsPerDevice = EXTCOM_LANES;

constexpr auto kLaneUnits = [] {
  std::array<LaneUnit, kUnitsPerDevice> units{};
  size_t lane = 0;
  for (size_t block = 0; block < EXTCOM_BLOCKS; block++) {
    for (uint32_t unit = 0; unit < EXTCOM_UNITS(block); unit++) {
      units.at(lane++) = {EXTCOM_CONTROL_ADDRESS(block), EXTCOM_DATA_ADDRESS(block),
                          EXTCOM_FIRST_UNIT + unit};
    }
  }
  return units;
}();

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
        add(QVR_MEMOP_WRITEMEM, device, unit.control, EXTCOM_COMMAND(unit.unit, registerNumber));
        add(QVR_MEMOP_WRITEMEM, device, unit.data, value);
        add(QVR_MEMOP_WRITEMEM, device, unit.control, EXTCOM_CARRY_OUT_WRITE);
      }
    }
  }

  constexpr void readErrors(QVR_deviceId_t device, std::span<const uint32_t, kUnitsPerDevice> slots) {
    for (size_t i = 0; i < kUnitsPerDevice; i++) {
      add(QVR_MEMOP_WRITEMEM, device, kLaneUnits[i].control,
          EXTCOM_COMMAND(kLaneUnits[i].unit, EXTCOM_ERROR_COUNTER));
      add(QVR_MEMOP_WRITEMEM, device, kLaneUnits[i].control, EXTCOM_CARRY_OUT_READ);
      add(QVR_MEMOP_READMEM, device, kLaneUnits[i].data, slots[i]);
    }
  }
};

constexpr auto draftStart() {
  Draft<kStartPrbsSteps> draft;
  for (const QVR_deviceId_t device : {0, 1, 2, 3}) {
    draft.configure(device, EXTCOM_GENERATOR, {0, 4});
  }
  // The last device is configured twice, as the chips' own program has it.
  for (const QVR_deviceId_t device : {0, 1, 2, 3, 3}) {
    draft.configure(device, EXTCOM_CHECKER, {0, 4, EXTCOM_CHECKER_COUNTING});
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
