// The expected throughput of a line, and the rates it is computed from.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> etrCommands();

}  // namespace gfast::console
