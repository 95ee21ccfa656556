#include "qvrcli/session/pattern_size.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace gfast::console {

namespace {

constexpr size_t kTooLarge = kLargestPattern + 1;

// Copies that may each match nothing are compiled in a time that grows with the square of their number.
constexpr size_t kOptionalWeight = 4;

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

    bool lastIsCharacter = false;
    bool lastMayBeEmpty = false;   // and matches nothing then
    bool mayBeEmpty = true;        // every piece of this alternative
    bool otherMayBeEmpty = false;  // an alternative before this one
  };

  void step(char character) {
    switch (character) {
      case '(':
        groups_.emplace_back();
        break;
      case ')':
        closeGroup();
        break;
      case '|':
        nextAlternative();
        break;
      case '^':
      case '$':
        piece(1, true);
        groups_.back().lastIsCharacter = false;
        break;
      case '[':
        skipBracket();
        piece(1, false);
        break;
      case '*':
      case '?':
        repeatInPlace();
        break;
      case '+':
        repeat(2, false);  // one, and one that repeats in place
        break;
      case '{':
        repeatCounted();
        break;
      case '\\':
        next_ = std::min(next_ + 1, pattern_.size());
        piece(1, false);
        break;
      default:
        piece(1, false);
    }
  }

  void piece(size_t size, bool mayBeEmpty) {
    settleLast();
    Group& group = groups_.back();
    group.size = add(group.size, size);
    group.last = size;
    group.lastIsCharacter = true;
    group.lastMayBeEmpty = mayBeEmpty;
  }

  // Nothing repeats the last piece any more.
  void settleLast() {
    Group& group = groups_.back();
    group.mayBeEmpty = group.mayBeEmpty && (group.last == 0 || group.lastMayBeEmpty);
    group.last = 0;
  }

  void nextAlternative() {
    settleLast();
    Group& group = groups_.back();
    group.size = add(group.size, 1);
    group.otherMayBeEmpty = group.otherMayBeEmpty || group.mayBeEmpty;
    group.mayBeEmpty = true;
  }

  void closeGroup() {
    settleLast();
    const Group closed = groups_.back();
    if (groups_.size() > 1) {
      groups_.pop_back();
    }
    piece(add(closed.size, 1), closed.mayBeEmpty || closed.otherMayBeEmpty);
    groups_.back().lastIsCharacter = false;
  }

  void repeatInPlace() {
    Group& group = groups_.back();
    countEmptyRepetition();
    group.size = add(group.size, 1);
    group.lastMayBeEmpty = true;
  }

  void repeat(size_t copies, bool mayBeEmpty) {
    Group& group = groups_.back();
    countEmptyRepetition();
    group.lastMayBeEmpty = group.lastMayBeEmpty || mayBeEmpty;
    const size_t repeated = multiply(group.last, group.lastMayBeEmpty ? copies * kOptionalWeight : copies);
    group.size = add(group.size, repeated);
    group.last = std::max<size_t>(repeated, 1);
  }

  // A group, or a place in the line, that is repeated though it may match nothing: some C libraries take a
  // time that doubles with each.
  void countEmptyRepetition() {
    Group& group = groups_.back();
    if (group.lastMayBeEmpty && !group.lastIsCharacter) {
      group.size = kTooLarge;
    }
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
    repeat(add(most, 1), least == 0);
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
