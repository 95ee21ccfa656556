// All lines on one page: what each can carry and what it carries.
#pragma once

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

std::span<const Command> networkInfoCommands();

}  // namespace gfast::console
