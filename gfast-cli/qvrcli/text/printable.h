// Text from outside that an operator's terminal shall show.
#pragma once

#include <string>
#include <string_view>

namespace gfast::console {

constexpr bool isPrintable(char character) {
  return character >= ' ' && character <= '~';
}

// Control characters from the equipment must not reach the terminal: '.' in the place of each byte that is
// not printable ASCII.
std::string printable(std::string_view bytes);

}  // namespace gfast::console
