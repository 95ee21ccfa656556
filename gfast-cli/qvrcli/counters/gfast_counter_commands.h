// The chip's counter blocks and what the far end tells of itself, as it comes.
#pragma once

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

std::span<const Command> gfastCounterCommands();

}  // namespace gfast::console
