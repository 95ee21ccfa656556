#include "qvrcli/session/pattern_size.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace gfast::console {

namespace {

constexpr size_t kTooLarge = kLargestPattern + 1;

size_t add(size_t a, size_t b) {
  return std::min(a + b, kTooLarge);
}

size_t multiply(size_t a, size_t b) {
  return std::min(std::min(a, kTooLarge) * std::min(b, kTooLarge), kTooLarge);
}

// Reads a pattern once and adds up its pieces.
class PatternMeter {
 public:
  explicit PatternMeter(std::string_view pattern) : pattern_(pattern) {}

  size_t measure() {
    while (next_ < pattern_.size()) {
      step(pattern_[next_++]);
    }
    size_t size = 0;
    for (const Group& open : groups_) {
      size = add(size, open.size);
    }
    return size;
  }

 private:
  struct Group {
    size_t size = 0;  // of all pieces so far
    size_t last = 0;  // of the piece that a repetition would repeat
  };

  void step(char character) {
    switch (character) {
      case '(':
        groups_.emplace_back();
        break;
      case ')':
        closeGroup();
        break;
      case '[':
        skipBracket();
        piece(1);
        break;
      case '+':
        repeat(2);  // one, and one that repeats in place
        break;
      case '{':
        repeatCounted();
        break;
      case '\\':
        next_ = std::min(next_ + 1, pattern_.size());
        piece(1);
        break;
      default:
        piece(character == '*' || character == '?' ? 0 : 1);
    }
  }

  void piece(size_t size) {
    Group& group = groups_.back();
    if (size == 0) {
      group.size = add(group.size, 1);  // repeats in place
      return;
    }
    group.size = add(group.size, size);
    group.last = size;
  }

  void closeGroup() {
    const size_t size = add(groups_.back().size, 1);
    if (groups_.size() > 1) {
      groups_.pop_back();
    }
    piece(size);
  }

  void repeat(size_t copies) {
    Group& group = groups_.back();
    const size_t repeated = multiply(group.last, copies);
    group.size = add(group.size, repeated);
    group.last = std::max<size_t>(repeated, 1);
  }

  size_t number() {
    size_t value = 0;
    while (next_ < pattern_.size() && std::isdigit(static_cast<unsigned char>(pattern_[next_])) != 0) {
      value = add(multiply(value, 10), static_cast<size_t>(pattern_[next_++] - '0'));
    }
    return value;
  }

  // "{3}", "{2,5}", "{2,}", "{,5}". Text that only begins like a repetition is counted as one.
  void repeatCounted() {
    const size_t least = number();
    size_t most = least;
    if (next_ < pattern_.size() && pattern_[next_] == ',') {
      next_++;
      most = std::max(number(), least + 1);
    }
    if (next_ < pattern_.size() && pattern_[next_] == '}') {
      next_++;
    }
    repeat(add(most, 1));
  }

  // Moves behind the next occurrence of the text, or to the end.
  void skipPast(std::string_view text) {
    const size_t found = pattern_.find(text, next_);
    next_ = found == std::string_view::npos ? pattern_.size() : found + text.size();
  }

  // "[abc]", "[^]x]", "[[:alpha:]_]".
  void skipBracket() {
    if (next_ < pattern_.size() && pattern_[next_] == '^') {
      next_++;
    }
    for (bool first = true; next_ < pattern_.size(); first = false) {
      const char character = pattern_[next_++];
      if (character == ']' && !first) {
        return;
      }
      const char kind = next_ < pattern_.size() ? pattern_[next_] : '\0';
      if (character == '[' && (kind == ':' || kind == '.' || kind == '=')) {
        next_++;
        const char end[] = {kind, ']'};
        skipPast(std::string_view(end, sizeof end));
      }
    }
  }

  std::string_view pattern_;
  size_t next_ = 0;
  std::vector<Group> groups_{1};
};

}  // namespace

size_t patternSize(std::string_view pattern) {
  return PatternMeter(pattern).measure();
}

}  // namespace gfast::console
