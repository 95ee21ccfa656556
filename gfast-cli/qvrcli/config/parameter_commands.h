// The firmware's parameters: what its dictionary lists, and their values.
#pragma once

#include <cstdint>
#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> parameterCommands();

// The id of a display name, spelt exactly so; QVR_K_PARAM_NAMES when there is none.
uint32_t paramNameToParamId(const char* xi_name);

}  // namespace gfast::console
