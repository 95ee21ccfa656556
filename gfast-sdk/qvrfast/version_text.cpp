#include "qvrfast/version_text.h"

#include <cstdio>
#include <cstring>
#include <string_view>

using namespace gfast;

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kDigits = "0123456789";
constexpr unsigned kLargestNumber = 255;

// Reads a text from the front. Each step returns whether it found its part.
class TextScanner {
 public:
  explicit TextScanner(std::string_view text) : left_(text) {}

  bool number(unsigned& value) {
    skipBlanks();
    value = 0;
    const std::string_view digits = take(left_.find_first_not_of(kDigits));
    for (const char digit : digits) {
      value = value * 10 + static_cast<unsigned>(digit - '0');
      if (value > kLargestNumber) {
        return false;
      }
    }
    return !digits.empty();
  }

  bool point() { return take(left_.starts_with('.') ? 1 : 0).size() == 1; }

  bool word(std::string_view& value) {
    skipBlanks();
    value = take(left_.find_first_of(kBlanks));
    return !value.empty();
  }

 private:
  void skipBlanks() { take(left_.find_first_not_of(kBlanks)); }

  // Returns the next characters, as many as `length` or as are left.
  std::string_view take(size_t length) {
    const std::string_view taken = left_.substr(0, length);
    left_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view left_;
};

}  // namespace

void gfast::rewriteVersion(VersionForm form, QVR_versionText_t& text) {
  QVR_versionText_t original;
  std::memcpy(original, text, sizeof original);
  TextScanner scanner({original, strnlen(original, sizeof original)});
  unsigned number[3];
  std::string_view word;
  if (!scanner.number(number[0]) || !scanner.point() || !scanner.number(number[1]) || !scanner.point() ||
      !scanner.number(number[2]) || !scanner.word(word)) {
    return;
  }
  std::memset(text, 0, sizeof text);
  std::snprintf(text, sizeof text, "%u.%u.%u%s %.*s", number[0], number[1], number[2],
                form == VersionForm::kFourNumbers ? ".0" : "", static_cast<int>(word.size()), word.data());
}
