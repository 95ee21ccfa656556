#include "virtual-board/description/foreign_text.h"

#include <algorithm>

namespace gfast::board {

namespace {

constexpr int kMostNames = 100;
constexpr size_t kMostBytes = 400;

// The position behind a string that begins at `start`, or behind the file.
size_t endOfString(std::string_view text, size_t start) {
  const std::string one(1, text[start]);
  const std::string three(3, text[start]);
  const std::string_view rest = text.substr(start);
  const std::string& quote = rest.starts_with(three) ? three : one;
  size_t at = start + quote.size();
  while (at < text.size() && !text.substr(at).starts_with(quote)) {
    if (quote.size() == 1 && text[at] == '\n') {
      return at;  // a mistake, which the parser reports
    }
    at += one == "\"" && text[at] == '\\' ? 2 : 1;
  }
  return std::min(at + quote.size(), text.size());
}

}  // namespace

size_t lineNestedTooDeeply(std::string_view text) {
  constexpr std::string_view separators = ",=[]{}\n";
  size_t line = 1;
  int names = 1;
  for (size_t at = 0; at < text.size();) {
    const char character = text[at];
    size_t next = at + 1;
    if (character == '"' || character == '\'') {
      next = endOfString(text, at);
    } else if (character == '#') {
      next = std::min(text.find('\n', at), text.size());
    } else if (separators.find(character) != std::string_view::npos) {
      names = 1;
    } else if (character == '.' && ++names > kMostNames) {
      return line;
    }
    line += static_cast<size_t>(std::count(text.begin() + static_cast<ptrdiff_t>(at),
                                           text.begin() + static_cast<ptrdiff_t>(next), '\n'));
    at = next;
  }
  return 0;
}

std::string printable(std::string_view text) {
  std::string line(text.substr(0, kMostBytes));
  std::replace(line.begin(), line.end(), '\n', ' ');
  std::replace_if(
      line.begin(), line.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
  return text.size() > kMostBytes ? line + "..." : line;
}

}  // namespace gfast::board
