// The rates of all lines in one table.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> networkInfoCommands();

}  // namespace gfast::console
