#include "gfast-report/console/printed_values.h"

#include <fmt/format.h>
#include <qvr.h>

#include <algorithm>
#include <charconv>

#include "qvrcli/text/printable.h"

namespace gfast::report {

namespace {

constexpr size_t kLongestLine = 512;
constexpr size_t kMostLabels = 200;
constexpr size_t kWordsOfRow = 3;

std::vector<std::string_view> wordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  for (size_t at = line.find_first_not_of(' '); at != std::string_view::npos;
       at = line.find_first_not_of(' ', at)) {
    const size_t end = std::min(line.find(' ', at), line.size());
    words.push_back(line.substr(at, end - at));
    at = end;
  }
  return words;
}

struct CodeLimits {
  int least, most;
};

CodeLimits limitsOf(ToneTable kind) {
  constexpr CodeLimits kLimits[] = {{0, 15}, {0, 255}, {0, 255}, {INT16_MIN, INT16_MAX}};
  return kLimits[static_cast<size_t>(kind)];
}

// The code in a row, which must be that of the tone, and all parts of which must agree.
std::optional<int> codeIn(std::string_view row, ToneTable kind, size_t tone) {
  const auto words = wordsOf(row);
  if (words.size() != kWordsOfRow) {
    return std::nullopt;
  }
  const std::string number = fmt::format("{}", tone);
  const std::string frequency =
      fmt::format("{:.5f}", static_cast<double>(tone) * QVR_K_SUBCARRIER_SPACING_MHZ);
  const bool bits = kind == ToneTable::kBits;
  const auto code = numberIn(words[bits ? 2 : 1], limitsOf(kind).least, limitsOf(kind).most);
  if (!code || words[bits ? 1 : 0] != frequency || (bits && words[0] != number)) {
    return std::nullopt;
  }
  const int value = static_cast<int>(*code);
  if (!bits && words[2] != fmt::format("{:.1f}", valueOf(kind, value))) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r";
  const size_t first = text.find_first_not_of(kBlank);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(trimmed(text.substr(0, std::min(end, kLongestLine))));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::optional<int64_t> numberIn(std::string_view text, int64_t least, int64_t most) {
  int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && value >= least && value <= most ? std::optional(value) : std::nullopt;
}

std::optional<int> tenthsIn(std::string_view text) {
  constexpr int kMost = 9999;
  const size_t point = text.find('.');
  if (point == std::string_view::npos || text.size() != point + 2) {
    return std::nullopt;
  }
  const auto whole = numberIn(text.substr(0, point), -kMost, kMost);
  const auto tenth = numberIn(text.substr(point + 1), 0, 9);
  if (!whole || !tenth) {
    return std::nullopt;
  }
  const int64_t sign = text.front() == '-' ? -1 : 1;
  return static_cast<int>(*whole * 10 + sign * *tenth);
}

std::optional<time_t> stampIn(std::string_view text) {
  constexpr size_t kLength = 19;  // without the zone
  constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:dd";
  text = text.substr(0, kLength);
  const bool fits = text.size() == kLength &&
                    std::equal(text.begin(), text.end(), kPattern.begin(), [](char character, char pattern) {
                      return pattern == 'd' ? character >= '0' && character <= '9' : character == pattern;
                    });
  if (!fits) {
    return std::nullopt;
  }
  const auto part = [text](size_t at, size_t length) {
    return static_cast<int>(numberIn(text.substr(at, length), 0, 9999).value_or(0));
  };
  tm moment{};
  moment.tm_year = part(0, 4) - 1900;
  moment.tm_mon = part(5, 2) - 1;
  moment.tm_mday = part(8, 2);
  moment.tm_hour = part(11, 2);
  moment.tm_min = part(14, 2);
  moment.tm_sec = part(17, 2);
  return timegm(&moment);
}

Labelled::Labelled(std::string_view text) {
  for (const std::string_view line : linesOf(text)) {
    add(line);
  }
}

// A label is one word, or all before a colon or two blanks.
void Labelled::add(std::string_view line) {
  size_t end = std::min({line.find(": "), line.find("  "), line.size()});
  if (const size_t assigned = line.find(" = "); assigned < end) {
    end = assigned;
  }
  std::string_view value = trimmed(line.substr(end));
  if (end == line.size()) {  // one blank only
    end = std::min(line.find(' '), line.size());
    value = trimmed(line.substr(end));
  }
  if (value.starts_with("=") || value.starts_with(":")) {
    value = trimmed(value.substr(1));
  }
  if (end > 0 && values_.size() < kMostLabels) {
    values_.emplace(line.substr(0, end), value);
  }
}

std::string_view Labelled::text(std::string_view label) const {
  const auto found = values_.find(label);
  return found == values_.end() ? std::string_view() : found->second;
}

std::optional<int64_t> Labelled::number(std::string_view label, int64_t least, int64_t most) const {
  return numberIn(text(label), least, most);
}

double valueOf(ToneTable kind, int code) {
  switch (kind) {
    case ToneTable::kBits:
      return code;
    case ToneTable::kSnr:
      return code / 2.0 - 32;
    case ToneTable::kNoise:
      return -33 - code / 2.0;
    case ToneTable::kHlog:
      return 6 - code / 10.0;
  }
  return 0;
}

std::string firstLineOf(std::string_view text) {
  constexpr size_t kWidth = 70;
  for (const std::string_view line : linesOf(text)) {
    if (!line.empty()) {
      return console::printable(line.substr(0, kWidth));
    }
  }
  return "nothing";
}

PrintedTable tableIn(std::string_view text, ToneTable kind) {
  PrintedTable table;
  for (const std::string_view line : linesOf(text)) {
    if (line.empty()) {
      continue;
    }
    const auto code =
        table.codes.size() < QVR_MAX_NUMBER_OF_TONES ? codeIn(line, kind, table.codes.size()) : std::nullopt;
    if (!code) {
      const std::string row = table.codes.empty() ? "" : fmt::format("row {}: ", table.codes.size());
      return {{}, row + firstLineOf(line)};
    }
    table.codes.push_back(*code);
  }
  if (table.codes.empty()) {
    table.problem = "nothing is printed";
  } else if (table.codes.size() < QVR_MAX_NUMBER_OF_TONES) {
    table.problem = fmt::format("ends at tone {}", table.codes.size() - 1);
  }
  return table;
}

}  // namespace gfast::report
