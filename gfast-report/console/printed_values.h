// What a console prints, as values. The text is a stranger's: what does not look exactly as a console writes
// it has no value.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gfast::report {

// The lines of a reply, without their ends; none longer than a console's longest.
std::vector<std::string_view> linesOf(std::string_view text);
std::vector<std::string_view> linesOf(std::string&& text) = delete;  // they lie in it

std::string_view trimmed(std::string_view text);

// A whole number within the limits, with nothing beside it.
std::optional<int64_t> numberIn(std::string_view text, int64_t least, int64_t most);

// A number with one digit behind the point, in tenths: "8.1" is 81.
std::optional<int> tenthsIn(std::string_view text);

// The time in "2024-01-01T00:00:20+UTC" as if it were UTC, whatever the zone.
std::optional<time_t> stampIn(std::string_view text);

// Values by the label in front of them. Of a label that comes twice, the first value.
class Labelled {
 public:
  Labelled() = default;
  explicit Labelled(std::string_view text);

  void add(std::string_view line);
  bool empty() const { return values_.empty(); }
  std::string_view text(std::string_view label) const;  // empty when it is not there
  std::optional<int64_t> number(std::string_view label, int64_t least, int64_t most) const;

 private:
  std::map<std::string, std::string, std::less<>> values_;
};

enum class ToneTable { kBits, kSnr, kNoise, kHlog };

// A table by tone.
struct PrintedTable {
  std::vector<int> codes;  // as printed, from tone 0 on
  std::string problem;     // why it has no codes, or fewer than there are tones
};

PrintedTable tableIn(std::string_view text, ToneTable kind);

// Decibels, or the bits, of a code.
double valueOf(ToneTable kind, int code);

// The first line that says something, with only printable characters, cut to a line of a terminal.
std::string firstLineOf(std::string_view text);

}  // namespace gfast::report
