// The chips' log lines, and the level of the library's own trace.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> loggingCommands();

}  // namespace gfast::console
