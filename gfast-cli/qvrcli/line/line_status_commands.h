// The lines: how many there are, their states, their status, their channels, their configuration.
#pragma once

#include <qvr.h>

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> lineStatusCommands();

// How many lines the discovered devices have, so that each number below it is a line id.
QVR_lineId_t numberOfLinesFound();

}  // namespace gfast::console
