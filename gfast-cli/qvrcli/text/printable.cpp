#include "qvrcli/text/printable.h"

#include <algorithm>

namespace gfast::console {

std::string printable(std::string_view bytes) {
  std::string text(bytes);
  std::ranges::replace_if(
      text, [](char character) { return !isPrintable(character); }, '.');
  return text;
}

}  // namespace gfast::console
