#include "qvrcli/config/config_rules.h"

#include <qvr.h>

#include <algorithm>
#include <iterator>
#include <limits>

#include "qvrcli/text/arguments.h"

namespace gfast::console {

namespace {

constexpr int kLastIndex = QVR_K_MAX_SUBCARRIER_RANGES - 1;
static_assert(QVR_K_MAX_PSD_BREAKPOINTS == QVR_K_MAX_SUBCARRIER_RANGES);

// A word without digits leaves the number as it was. So the number starts as one that no rule accepts.
constexpr int kNoNumber = std::numeric_limits<int>::min();

bool readNumber(const char* word, int low, int high, int* number) {
  *number = kNoNumber;
  return isValidNumber(word, low, high, number) == TRUE;
}

}  // namespace

const char* readInRange(const ConfigRule& rule, const char* const words[], ConfigValues* values) {
  int number = 0;
  const bool accepted = readNumber(words[0], rule.low, rule.high, &number);
  values->first = number;
  return accepted ? nullptr : rule.refusal;
}

const char* readZeroOrInRange(const ConfigRule& rule, const char* const words[], ConfigValues* values) {
  const char* const refusal = readInRange(rule, words, values);
  return values->first == 0 ? nullptr : refusal;
}

// Every number is in range here, so no start value shows that a word has no digits. Two different ones do: a
// word with digits makes them equal.
const char* readUnsigned(const ConfigRule& rule, const char* const words[], ConfigValues* values) {
  constexpr uint32_t kHighest = std::numeric_limits<uint32_t>::max();
  uint32_t number = 0;
  uint32_t again = 1;
  const bool accepted = isValidUnsignedNumber(words[0], 0, kHighest, &number) == TRUE &&
                        isValidUnsignedNumber(words[0], 0, kHighest, &again) == TRUE && number == again;
  values->first = number;
  return accepted ? nullptr : rule.refusal;
}

const char* readFlag(const ConfigRule& rule, const char* const words[], ConfigValues* values) {
  values->first = isKeyword(words[0], "t") ? TRUE : FALSE;
  return values->first == TRUE || isKeyword(words[0], "f") ? nullptr : rule.refusal;
}

const char* readCyclicExtension(const ConfigRule& rule, const char* const words[], ConfigValues* values) {
  constexpr int64_t kAccepted[] = {10, 12, 14, 16, 20, 24, 30, 33};
  const char* const refusal = readInRange(rule, words, values);
  return std::ranges::find(kAccepted, values->first) != std::end(kAccepted) ? refusal : rule.refusal;
}

const char* readPair(const ConfigRule& rule, const char* const words[], ConfigValues* values) {
  if (!readNumber(words[0], 0, kLastIndex, &values->index)) {
    return "invalid parameter - must enter a value between 0..1";
  }
  const char* const refusal = readInRange(rule, words + 1, values);
  const bool accepted = refusal == nullptr && readNumber(words[2], 0, rule.secondHigh, &values->second);
  return accepted ? nullptr : rule.refusal;
}

const char* readRange(const ConfigRule& rule, const char* const words[], ConfigValues* values) {
  const char* const refusal = readPair(rule, words, values);
  if (refusal != nullptr || values->second > values->first) {
    return refusal;
  }
  return "invalid value - stop value must be greater than start value";
}

}  // namespace gfast::console
