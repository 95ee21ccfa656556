// The words that edit the configuration, as one table, and what must be true of it.
#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "qvrcli/command.h"
#include "qvrcli/config/config_commands.h"
#include "qvrcli/config/config_fields.h"
#include "qvrcli/config/config_rules.h"

namespace gfast::console {

struct ConfigWord {
  Handler handler;
  const char* keyword;
  const char* help;
  const char* usage;
  ConfigRule accepts;
  std::array<ConfigField, 2> fields;

  constexpr auto fieldsStoredBy(StoredBy storedBy) const {
    return std::ranges::count(fields, storedBy, &ConfigField::storedBy);
  }
  constexpr bool takesDirection() const { return fieldsStoredBy(StoredBy::kWord) == 0; }
};

namespace config_rows {

using enum ConfigForm;
using Tdd = QVR_TDDProfile_t;
using Spectrum = QVR_lineSpectrumProfile_t;
using Rfi = QVR_rfiProfile_t;
using Upbo = QVR_upboProfile_t;
using Margin = QVR_noiseMarginProfile_t;
using Fra = QVR_fastRateAdaptationProfile_t;
using Reinit = QVR_reinitPolicyProfile_t;
using Rtx = QVR_retransmissionProfile_t;
using Vectoring = QVR_vectoringProfile_t;
using Sra = QVR_sraProfile_t;
using Rate = QVR_dataRateProfile_t;
using Path = QVR_dataPathConfigProfile_t;
using Ace = QVR_AceConfigProfile_t;
using Dta = QVR_DTAProfile_t;

#define CONFIG_WORD(handler, keyword, help, usage, accepts, ...) \
  {handler, keyword, help, usage, accepts, {__VA_ARGS__}},
inline constexpr ConfigWord kWords[] = {
#include "qvrcli/config/config_words.inc"
};
#undef CONFIG_WORD

}  // namespace config_rows

inline constexpr std::span<const ConfigWord> kConfigWords = config_rows::kWords;

constexpr bool keywordsDiffer(std::span<const ConfigWord> words) {
  return std::ranges::all_of(words, [words](const ConfigWord& word) {
    return std::ranges::count(words, std::string_view(word.keyword),
                              [](const ConfigWord& other) { return std::string_view(other.keyword); }) == 1;
  });
}

// Whatever direction is typed, the word stores into exactly one field.
constexpr bool storesIntoOneField(const ConfigWord& word) {
  const auto down = word.fieldsStoredBy(StoredBy::kDownstream) + word.fieldsStoredBy(StoredBy::kEitherWay);
  const auto up = word.fieldsStoredBy(StoredBy::kUpstream) + word.fieldsStoredBy(StoredBy::kEitherWay);
  return word.takesDirection() ? down == 1 && up == 1
                               : word.fieldsStoredBy(StoredBy::kWord) == 1 && down == 0 && up == 0;
}

static_assert(keywordsDiffer(kConfigWords), "two rows have the same keyword");
static_assert(std::ranges::all_of(kConfigWords, storesIntoOneField),
              "a row has no field for a direction, or more than one");

// The row of a keyword. A keyword without a row does not compile.
consteval const ConfigWord& configWord(std::string_view keyword) {
  for (const ConfigWord& word : kConfigWords) {
    if (word.keyword == keyword) {
      return word;
    }
  }
  throw "no row has this keyword";
}

}  // namespace gfast::console
