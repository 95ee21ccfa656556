// Who is at the ends of a line.
#pragma once

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

std::span<const Command> inventoryCommands();

}  // namespace gfast::console
