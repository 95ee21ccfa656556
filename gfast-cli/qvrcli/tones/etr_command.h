// The throughput to be expected of a line, and the rates it comes from.
#pragma once

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

std::span<const Command> etrCommands();

}  // namespace gfast::console
