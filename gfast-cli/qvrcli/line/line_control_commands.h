// Activating, deactivating and resetting lines.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> lineControlCommands();

}  // namespace gfast::console
