// Error numbers by the names that board files and request traces use.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace gfast::board {

// The number of a name such as "EIO"; empty for an unknown name.
std::optional<int> errnoByName(std::string_view name);

// The name of a number; its decimal digits when it has none here.
std::string errnoName(int error);

}  // namespace gfast::board
