// The counter blocks of a chip, and what the far end counts and measures.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> gfastCounterCommands();

}  // namespace gfast::console
