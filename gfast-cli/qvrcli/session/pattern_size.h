// The size of a regular expression, known before it is compiled: what the C library needs for it.
#pragma once

#include <cstddef>
#include <string_view>

namespace gfast::console {

constexpr size_t kLargestPattern = 1000;  // pieces, each matching one character at most

// How many pieces an extended regular expression has when its repetitions are written out; some number above
// kLargestPattern when it has more than that. So has one that repeats a group, or a place in the line, which
// may match nothing, like "(^)*" or "(a?)+": the time that some C libraries take doubles with each of them.
size_t patternSize(std::string_view pattern);

}  // namespace gfast::console
