// Boot loader, manufacturer block and firmware: loading, upgrading, erasing.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> firmwareCommands();

}  // namespace gfast::console
