// Link states as they are shown.
#pragma once

#include <cstddef>

namespace gfast::console {

constexpr size_t kTheLine = 0;  // the only one of a device

// Name of a link state, padded to 15 characters (the tenth is longer).
const char* linkStateString(int xi_state);

}  // namespace gfast::console
