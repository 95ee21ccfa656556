// Error numbers by the names that board files and request traces use.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace gfast::board {

// The number of a name such as "EIO"; nothing for a name that is not known.
std::optional<int> errnoByName(std::string_view name);

// The name of a number, or its decimal digits.
std::string errnoName(int error);

}  // namespace gfast::board
