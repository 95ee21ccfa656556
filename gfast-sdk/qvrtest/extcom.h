// The check of the links between chips (Extcom): its programs and their results.
//
// A chip has two blocks of lane units, reached through a control word and a data word each: a command selects
// a unit and one of its registers. Only the chips define what registers and values mean.
#pragma once

#include <array>

#include "qvrtest/device_programs.h"

namespace gfast {

// Both are written for a cluster of four devices.
constexpr size_t kStartPrbsSteps = 483;
constexpr size_t kPrbsResultsSteps = 84;

extern const std::array<QVR_instruction_t, kStartPrbsSteps> startPRBSTestProgram;
extern const std::array<QVR_instruction_t, kPrbsResultsSteps> getPRBSTestResultsProgram;

// Reads every counter into `slots`; slots that nothing reads become -1. Returns the counters of this system's
// devices in `results`, which is untouched on failure.
QVR_retval_t collectExtcomErrors(ProgramSlots& slots, const ProgramMemory& memory,
                                 QVR_extcomPortErrors_t& results);

}  // namespace gfast
