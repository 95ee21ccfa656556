// The size of a regular expression, known before it is compiled.
#pragma once

#include <cstddef>
#include <string_view>

namespace gfast::console {

constexpr size_t kLargestPattern = 1000;  // pieces, each matching one character at most

// How many pieces an extended regular expression has when its repetitions are written out; some number above
// kLargestPattern when it has more than that.
size_t patternSize(std::string_view pattern);

}  // namespace gfast::console
