// The console's vocabulary: the rows of all families of commands, in the order of their registration.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

// Every registration, parents before their children: help lists them in this order.
std::span<const Command> commandTable();

}  // namespace gfast::console
