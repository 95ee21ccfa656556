#include "qvrdev/log_text.h"

#include <fmt/printf.h>

#include <algorithm>
#include <optional>

using namespace gfast;

namespace {

constexpr std::string_view kSigned = "di";
constexpr std::string_view kUnsigned = "uoxX";
constexpr std::string_view kCharacters = "cC";
constexpr std::string_view kNotPrintable = "spSfFeEgGaA";  // the word alone does not say what to print

constexpr bool isOneOf(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr char shown(char c) {
  const auto byte = static_cast<unsigned char>(c);
  const bool control = (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') || byte == 0x7F;
  return control ? '.' : c;
}

struct Conversion {
  std::string flags;  // without '-' and '0'
  bool left = false;
  bool zeros = false;
  int width = 0;
  std::optional<int> precision;
  int halvings = 0;                // of the word's 32 bits: h once, hh twice
  std::optional<size_t> position;  // of the word, when the format says "%2$d"
  char type = '\0';
};

// printf's "%" with the flags, width and precision that go with a conversion of this type.
std::string formatOf(const Conversion& c, char type) {
  std::string format = "%";
  format += c.left ? "-" : "";
  for (const char flag : c.flags) {
    const bool sign = flag == '+' || flag == ' ';
    if (sign ? type == 'd' : isOneOf(type, "oxX")) {
      format += flag;
    }
  }
  const bool number = type != 'c' && type != 's';
  format += c.zeros && !c.left && number ? "0" : "";
  format += c.width > 0 ? std::to_string(c.width) : "";
  format += c.precision && number ? '.' + std::to_string(*c.precision) : "";
  return format + type;
}

// What printf prints for 0 with precision 0: the sign, or the leading zero of "%#o".
std::string renderNothing(const Conversion& c) {
  const bool isSigned = isOneOf(c.type, kSigned);
  const bool plus = isSigned && isOneOf('+', c.flags);
  const bool blank = isSigned && isOneOf(' ', c.flags);
  const bool octal = c.type == 'o' && isOneOf('#', c.flags);
  return fmt::sprintf(formatOf(c, 's'), plus ? "+" : blank ? " " : octal ? "0" : "");
}

std::string renderNumber(const Conversion& c, uint32_t word) {
  const int dropped = c.halvings == 0 ? 0 : c.halvings == 1 ? 16 : 24;
  const uint32_t bits = word << dropped;
  if (bits == 0 && c.precision == 0) {
    return renderNothing(c);
  }
  if (isOneOf(c.type, kSigned)) {
    return fmt::sprintf(formatOf(c, 'd'), static_cast<int32_t>(bits) >> dropped);
  }
  return fmt::sprintf(formatOf(c, c.type), bits >> dropped);
}

class LogText {
 public:
  LogText(std::string_view format, const LogParams& params) : rest_(format), params_(params) {}

  std::string render(size_t room) {
    const bool endsLine = rest_.ends_with('\n');
    while (!rest_.empty() && text_.size() <= room) {
      const size_t plain = std::min(rest_.find('%'), rest_.size());
      appendShown(rest_.substr(0, plain));
      rest_.remove_prefix(plain);
      if (!rest_.empty()) {
        appendConversion();
      }
    }
    if (text_.size() > room) {
      text_.resize(room);
      text_.back() = endsLine ? '\n' : text_.back();
    }
    return std::move(text_);
  }

 private:
  void appendShown(std::string_view text) { std::ranges::transform(text, std::back_inserter(text_), shown); }

  void appendConversion() {
    const std::string_view whole = rest_;
    rest_.remove_prefix(1);
    const Conversion conversion = parse();
    const std::string_view asItStands = whole.substr(0, whole.size() - rest_.size());
    if (conversion.type == '%') {
      text_ += '%';
      return;
    }
    if (!isOneOf(conversion.type, kSigned) && !isOneOf(conversion.type, kUnsigned) &&
        !isOneOf(conversion.type, kCharacters) && !isOneOf(conversion.type, kNotPrintable) &&
        conversion.type != 'n') {
      appendShown(asItStands);
      return;
    }
    const std::optional<uint32_t> word = conversion.position ? wordAt(*conversion.position) : nextWord();
    if (!word || conversion.type == 'n') {
      appendShown(asItStands);
      return;
    }
    try {
      appendShown(renderWord(conversion, *word));
    } catch (const fmt::format_error&) {
      appendShown(asItStands);
    }
  }

  static std::string renderWord(const Conversion& c, uint32_t word) {
    if (isOneOf(c.type, kCharacters)) {
      return fmt::sprintf(formatOf(c, 'c'), shown(static_cast<char>(word)));
    }
    if (isOneOf(c.type, kNotPrintable)) {
      return fmt::sprintf(formatOf(c, 's'), fmt::sprintf("0x%x", word));
    }
    return renderNumber(c, word);
  }

  // Parses the conversion at the front of the rest, behind its '%', and removes it. Type '\0': the format
  // ends too early.
  Conversion parse() {
    Conversion c;
    parsePosition(c);
    parseFlags(c);
    c.width = parseWidth(c);
    if (take('.')) {
      const int precision = take('*') ? static_cast<int32_t>(nextWord().value_or(0)) : parseNumber();
      if (precision >= 0) {
        c.precision = std::min(precision, kWidestField);
      }
    }
    for (; !rest_.empty() && isOneOf(rest_.front(), "hlLqjzt"); rest_.remove_prefix(1)) {
      c.halvings += rest_.front() == 'h' ? 1 : 0;
    }
    if (!rest_.empty()) {
      c.type = rest_.front();
      rest_.remove_prefix(1);
    }
    return c;
  }

  void parsePosition(Conversion& c) {
    const std::string_view before = rest_;
    if (rest_.empty() || rest_.front() == '0') {
      return;
    }
    const int number = parseNumber();
    if (number > 0 && take('$')) {
      c.position = static_cast<size_t>(number) - 1;
    } else {
      rest_ = before;
    }
  }

  void parseFlags(Conversion& c) {
    for (; !rest_.empty() && isOneOf(rest_.front(), "-+ #0'"); rest_.remove_prefix(1)) {
      const char flag = rest_.front();
      c.left |= flag == '-';
      c.zeros |= flag == '0';
      if (isOneOf(flag, "+ #") && !isOneOf(flag, c.flags)) {
        c.flags += flag;
      }
    }
  }

  int parseWidth(Conversion& c) {
    if (!take('*')) {
      return std::min(parseNumber(), kWidestField);
    }
    const int64_t width = static_cast<int32_t>(nextWord().value_or(0));
    c.left |= width < 0;
    return static_cast<int>(std::min<int64_t>(width < 0 ? -width : width, kWidestField));
  }

  // The number at the front of the rest, 0 without digits, at most kEnough.
  int parseNumber() {
    constexpr int kEnough = 100000;
    int number = 0;
    for (; !rest_.empty() && isDigit(rest_.front()); rest_.remove_prefix(1)) {
      number = std::min(number * 10 + (rest_.front() - '0'), kEnough);
    }
    return number;
  }

  bool take(char c) {
    const bool there = !rest_.empty() && rest_.front() == c;
    rest_.remove_prefix(there ? 1 : 0);
    return there;
  }

  std::optional<uint32_t> nextWord() { return wordAt(next_++); }

  std::optional<uint32_t> wordAt(size_t position) const {
    return position < params_.size() ? std::optional{params_[position]} : std::nullopt;
  }

  std::string_view rest_;  // of the format
  const LogParams& params_;
  size_t next_ = 0;
  std::string text_;
};

}  // namespace

std::string gfast::renderLogText(std::string_view format, const LogParams& params, size_t room) {
  return LogText(format.substr(0, format.find('\0')), params).render(room);
}
