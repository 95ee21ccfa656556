// The physical layer of a line: which subcarriers are processed, its front end, and every subcarrier's
// loading, SNR and equaliser in one table.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> phyCommands();

}  // namespace gfast::console
