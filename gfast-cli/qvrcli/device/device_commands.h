// A chip as a whole: what it is, finding it, booting it.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> deviceCommands();

}  // namespace gfast::console
