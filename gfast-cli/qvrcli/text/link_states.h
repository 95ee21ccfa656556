// Link states as they are shown.
#pragma once

namespace gfast::console {

// Name of a link state, padded to 15 characters (the tenth is longer).
const char* linkStateString(int xi_state);

}  // namespace gfast::console
