// What each subcarrier carries and suffers, and the attenuation of the whole band, upstream and downstream.
#pragma once

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

std::span<const Command> toneCommands();

}  // namespace gfast::console
