// What can be set in a line configuration, one table row a member: its keyword, what it accepts, and the
// fields it writes. Ranges and texts are the product's own, also where they disagree: operators' scripts
// depend on both.
#pragma once

#include <qvr.h>

#include <cstdint>
#include <string_view>

namespace gfast::console {

// The values of one command, as they were typed.
struct GivenValues {
  int index = 0;  // of the members that are lists
  int64_t first = 0;
  int second = 0;  // of the members that take two
};

// Parses the words behind the direction: nullptr when they are accepted, otherwise why not.
struct ConfigRule;
using ReadValues = const char* (*)(const ConfigRule& rule, const char* const words[], GivenValues* values);

struct ConfigRule {
  ReadValues read;
  int low;
  int high;
  int secondHigh;  // of the second value; the first and the second of a pair begin at 0
  const char* refusal;
};

// Stores a value, narrowed to what the field keeps.
using StoreValues = void (*)(QVR_lineConfig_t& config, const GivenValues& values);

struct ConfigMember {
  std::string_view keyword;
  ConfigRule accepts;
  StoreValues store;    // downstream, or without a direction
  StoreValues storeUs;  // upstream; nullptr of a member without a direction
};

// The row of a keyword; the keyword is in the table.
const ConfigMember& configMember(std::string_view keyword);

// Sets a member from the words that follow its keyword, as many as it takes: nullptr when that is done,
// otherwise why not, and the record is unchanged.
const char* setConfigMember(const ConfigMember& member, const char* const words[], QVR_lineConfig_t& config);

}  // namespace gfast::console
