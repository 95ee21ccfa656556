// The vectoring coefficients of a line, written to a file.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> vectoringCommands();

}  // namespace gfast::console
