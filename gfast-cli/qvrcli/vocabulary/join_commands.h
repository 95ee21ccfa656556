// Joining the rows that the families of commands publish with the order in which they are registered.
#pragma once

#include <span>
#include <vector>

#include "qvrcli/command.h"

namespace gfast::console {

// Where a word stands in the vocabulary.
struct Place {
  int mode;
  const char* path;
};

// The rows in the given order. A place whose path others begin with is a keyword of exec mode and has no row.
// Throws std::logic_error, with the path, when a place has no row or a row no place, or when there are two of
// either: a console without its whole vocabulary does not start.
std::vector<Command> joinCommands(std::span<const Place> order, std::span<const Command> rows);

}  // namespace gfast::console
