// Generating, sending and capturing test signals, and measuring the analogue front end with them.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> signalCommands();

}  // namespace gfast::console
