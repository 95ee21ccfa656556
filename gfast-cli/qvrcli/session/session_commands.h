// The session itself: pausing it, and running scripts in it.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> sessionCommands();

}  // namespace gfast::console
