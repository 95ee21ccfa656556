// The test of the links between the chips.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> extcomCommands();

}  // namespace gfast::console
