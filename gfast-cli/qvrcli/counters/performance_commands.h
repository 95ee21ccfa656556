// The performance counters of a line: now, by quarter hour and by day.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> performanceCommands();

}  // namespace gfast::console
