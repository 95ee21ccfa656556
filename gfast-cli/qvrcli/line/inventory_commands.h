// The inventory of the equipment at both ends of a line: showing it, and setting some of it.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> inventoryCommands();

}  // namespace gfast::console
