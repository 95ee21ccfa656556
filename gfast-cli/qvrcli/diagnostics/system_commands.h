// The system itself: its version, and whether it needs a restart.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> systemCommands();

}  // namespace gfast::console
