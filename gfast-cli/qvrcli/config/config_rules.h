// What the words of configuration mode accept behind their keyword and direction.
#pragma once

#include <cstdint>

namespace gfast::console {

// The values of one command, or of one field.
struct ConfigValues {
  int index = 0;  // in a list
  int64_t first = 0;
  int second = 0;  // of the entries of lists, which have two
};

// Parses the words behind the direction: nullptr when they are accepted, otherwise why not.
struct ConfigRule;
using ReadValues = const char* (*)(const ConfigRule& rule, const char* const words[], ConfigValues* values);

struct ConfigRule {
  ReadValues read;
  const char* refusal;
  int low = 0;
  int high = 0;
  int secondHigh = 0;  // of the second value; the lowest is 0
  int words = 1;       // how many it reads
};

const char* readInRange(const ConfigRule& rule, const char* const words[], ConfigValues* values);
const char* readZeroOrInRange(const ConfigRule& rule, const char* const words[], ConfigValues* values);
const char* readUnsigned(const ConfigRule& rule, const char* const words[], ConfigValues* values);
const char* readFlag(const ConfigRule& rule, const char* const words[], ConfigValues* values);
const char* readCyclicExtension(const ConfigRule& rule, const char* const words[], ConfigValues* values);

// An index, then two numbers; those of a range must rise.
const char* readPair(const ConfigRule& rule, const char* const words[], ConfigValues* values);
const char* readRange(const ConfigRule& rule, const char* const words[], ConfigValues* values);

// What the rows of config_words.inc are written with.
namespace config_rows {

constexpr int kPairWords = 3;

constexpr ConfigRule between(int low, int high, const char* refusal) {
  return {readInRange, refusal, low, high};
}
constexpr ConfigRule zeroOrBetween(int low, int high, const char* refusal) {
  return {readZeroOrInRange, refusal, low, high};
}
constexpr ConfigRule rangeUpTo(int last, const char* refusal) {
  return {readRange, refusal, 0, last, last, kPairWords};
}
constexpr ConfigRule breakpointUpTo(int lastSubcarrier, int highestLevel, const char* refusal) {
  return {readPair, refusal, 0, lastSubcarrier, highestLevel, kPairWords};
}
inline constexpr ConfigRule kTrueOrFalse{readFlag, "invalid parameter - must enter T or F"};
inline constexpr ConfigRule kAnyUnsigned{readUnsigned,
                                         "invalid parameter - must enter value between 0..4294967295"};
inline constexpr ConfigRule kCyclicExtension{
    readCyclicExtension, "invalid parameter - must enter value 10, 12, 14, 16, 20, 24, 30 and 33", 10, 33};

}  // namespace config_rows

}  // namespace gfast::console
