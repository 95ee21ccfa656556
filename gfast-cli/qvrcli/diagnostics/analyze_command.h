// Finding the assertion that came first in a crash dump.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> analyzeCommands();

}  // namespace gfast::console
