#pragma once

#include <stdexcept>

namespace gfast::board {

// A mistake in a board file, as one line: "file:line: reason".
class BoardFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace gfast::board
