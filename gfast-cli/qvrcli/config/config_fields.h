// The fields of a line configuration: where each lies in the record, which direction stores into it, and how
// `show` prints it.
#pragma once

#include <qvr.h>

#include <string_view>
#include <tuple>
#include <type_traits>

#include "qvrcli/config/config_rules.h"

namespace gfast::console {

// How a value is printed. A negative value in the unsigned form is a large number; some signed fields have
// it. The last two are lists, of which every entry has two lines.
enum class ConfigForm { kUnsigned, kSigned, kSignedAndBlank, kHexadecimal, kFlag, kRanges, kBreakpoints };

// When a word stores into the field.
enum class StoredBy {
  kNothing,     // it is only shown
  kWord,        // the word takes no direction
  kDownstream,  // the direction is "ds"
  kUpstream,    // the direction is "us"
  kEitherWay    // the word takes a direction, and both store here
};

struct ConfigField {
  StoredBy storedBy = StoredBy::kNothing;
  ConfigForm form = ConfigForm::kUnsigned;
  const char* name = "";   // in the record
  const char* label = "";  // in `show`; almost always the name
  void (*store)(QVR_lineConfig_t& config, const ConfigValues& values) = nullptr;  // narrows to the field
  ConfigValues (*load)(const QVR_lineConfig_t& config, int index) = nullptr;      // index of a list

  constexpr bool exists() const { return *name != '\0'; }
};

constexpr bool isList(ConfigForm form) {
  return form == ConfigForm::kRanges || form == ConfigForm::kBreakpoints;
}

// `show` prints all values in one column, behind labels of at most this many characters.
constexpr size_t kLabelWidth = 40;
constexpr std::string_view kLongestEntry = "[15].subCarrierIndex";  // behind the label of a list

constexpr bool labelFits(const ConfigField& field) {
  return std::string_view(field.label).size() + (isList(field.form) ? kLongestEntry.size() : 0) <=
         kLabelWidth;
}

// What the rows of config_words.inc are written with.
namespace config_rows {

inline constexpr std::tuple kProfiles{
    &QVR_lineConfig_t::tddProfile,          &QVR_lineConfig_t::lineSpectrumProfile,
    &QVR_lineConfig_t::rfiProfile,          &QVR_lineConfig_t::upboProfile,
    &QVR_lineConfig_t::noiseMarginProfile,  &QVR_lineConfig_t::fastRateAdaptationProfile,
    &QVR_lineConfig_t::reinitPolicyProfile, &QVR_lineConfig_t::retransmissionProfile,
    &QVR_lineConfig_t::vectoringProfile,    &QVR_lineConfig_t::sraProfile,
    &QVR_lineConfig_t::dataRateProfile,     &QVR_lineConfig_t::dataPathConfigProfile,
    &QVR_lineConfig_t::aceConfigProfile,    &QVR_lineConfig_t::dtaProfile,
};

// The field of a profile, in the only profile of its type.
template <typename Config, typename Profile, typename Type>
auto& fieldIn(Config& config, Type Profile::*field) {
  return (config.*std::get<Profile QVR_lineConfig_t::*>(kProfiles)).*field;
}

inline void assign(G9972_subCarrierIdxRange_t& range, const ConfigValues& values) {
  range.startSubcarrierIdx = static_cast<uint16_t>(values.first);
  range.stopSubcarrierIdx = static_cast<uint16_t>(values.second);
}
inline void assign(G9972_PSDMASKdescriptor_t& breakpoint, const ConfigValues& values) {
  breakpoint.subCarrierIndex = static_cast<uint16_t>(values.first);
  breakpoint.PSDlevel = static_cast<uint8_t>(values.second);
}

inline ConfigValues valuesOf(const G9972_subCarrierIdxRange_t& range, int index) {
  return {index, range.startSubcarrierIdx, range.stopSubcarrierIdx};
}
inline ConfigValues valuesOf(const G9972_PSDMASKdescriptor_t& breakpoint, int index) {
  return {index, breakpoint.subCarrierIndex, breakpoint.PSDlevel};
}

template <auto Field>
void store(QVR_lineConfig_t& config, const ConfigValues& values) {
  auto& field = fieldIn(config, Field);
  using Type = std::remove_reference_t<decltype(field)>;
  if constexpr (std::is_array_v<Type>) {
    assign(field[values.index], values);
  } else {
    field = static_cast<Type>(values.first);
  }
}

template <auto Field>
ConfigValues load(const QVR_lineConfig_t& config, int index) {
  const auto& field = fieldIn(config, Field);
  if constexpr (std::is_array_v<std::remove_reference_t<decltype(field)>>) {
    return valuesOf(field[index], index);
  } else {
    return {0, static_cast<int64_t>(field), 0};
  }
}

template <auto Field>
constexpr ConfigField makeField(StoredBy storedBy, const char* name, ConfigForm form) {
  return {storedBy, form, name, name, store<Field>, load<Field>};
}

// The field of a word that takes no direction.
template <auto Field>
constexpr ConfigField field(const char* name, ConfigForm form) {
  return makeField<Field>(StoredBy::kWord, name, form);
}

// The fields of a word that takes a direction.
template <auto Field>
constexpr ConfigField ds(const char* name, ConfigForm form) {
  return makeField<Field>(StoredBy::kDownstream, name, form);
}
template <auto Field>
constexpr ConfigField us(const char* name, ConfigForm form) {
  return makeField<Field>(StoredBy::kUpstream, name, form);
}
template <auto Field>
constexpr ConfigField eitherWay(const char* name, ConfigForm form) {
  return makeField<Field>(StoredBy::kEitherWay, name, form);
}

// A field that no word sets.
template <auto Field>
constexpr ConfigField shown(const char* name, ConfigForm form) {
  return makeField<Field>(StoredBy::kNothing, name, form);
}

// The field under a label of its own.
constexpr ConfigField labelled(const char* label, ConfigField field) {
  field.label = label;
  return field;
}

}  // namespace config_rows

}  // namespace gfast::console
