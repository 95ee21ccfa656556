// How the lines are and what they carry.
#pragma once

#include <qvr.h>

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

std::span<const Command> lineStatusCommands();

// Lines of the devices found, each with a valid line id.
QVR_lineId_t numberOfLinesFound();

}  // namespace gfast::console
