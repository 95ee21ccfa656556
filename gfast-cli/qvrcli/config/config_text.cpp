#include "qvrcli/config/config_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string_view>

#include "qvrcli/config/config_words.h"
#include "qvrcli/text/labelled_lines.h"

namespace gfast::console {

namespace {

// ---- What is shown, in which order ----

namespace unset_rows {

using namespace config_rows;

// The fields that no word sets.
constexpr ConfigField kFields[] = {
    shown<&Tdd::MF>("MF", kUnsigned),
    shown<&Rate::MAXGDRds>("MAXGDRds", kUnsigned),
    shown<&Rate::MAXGDRus>("MAXGDRus", kUnsigned),
    shown<&Rate::MINGDRds>("MINGDRds", kUnsigned),
    // Scripts know the upstream rate by this label.
    labelled("MINGDRds", shown<&Rate::MINGDRus>("MINGDRus", kUnsigned)),
    shown<&Dta::DTA_REPORTING_WIN>("DTA_REPORTING_WIN", kUnsigned),
};

}  // namespace unset_rows

// clang-format off

// The order of the lines, by the names of the fields.
constexpr std::string_view kShowOrder[] = {
    "MF", "Mds", "CE",
    "CARMASKds", "CARMASKus", "PSDMASKds", "PSDMASKus", "MAXATPds", "MAXATPus",
    "RFIBANDS", "IARBANDS",
    "UPBOPSDA", "UPBOPSDB", "UPBOKL", "UPBOKLF", "UPBOKLREF",
    "TARSNRMds", "TARSNRMus", "MAXSNRMus", "MINSNRMds", "MINSNRMus",
    "TARSNRM_RMCds", "TARSNRM_RMCus", "MINSNRM_RMCds", "MINSNRM_RMCus", "MAXBL_RMCds", "MAXBL_RMCus",
    "RNRATIOds", "RNRATIOus",
    "FEXT_CANCEL_ENABLEds", "FEXT_CANCEL_ENABLEus",
    "SRA_ENABLEds", "SRA_ENABLEus",
    "SRA_USNRMds", "SRA_UTIMEds", "SRA_USNRMus", "SRA_UTIMEus",
    "SRA_DSNRMds", "SRA_DTIMEds", "SRA_DSNRMus", "SRA_DTIMEus",
    "FRA_TIMEds", "FRA_TIMEus", "FRA_RTXUCds", "FRA_RTXUCus",
    "FRA_NTONESds", "FRA_NTONESus", "FRA_VENDISCds", "FRA_VENDISCus",
    "INPMIN_SHINEds", "INPMIN_SHINEus", "INPMIN_REINds", "INPMIN_REINus",
    "IAT_REINds", "IAT_REINus", "SHINERATIOds", "SHINERATIOus",
    "DELAYMAXds", "DELAYMAXus", "RTX_TESTMODEds", "RTX_TESTMODEus",
    "TPS_TESTMODE", "DRA_TESTMODE",
    "MAXNDRds", "MAXNDRus", "MINETRds", "MINETRus",
    "MAXGDRds", "MAXGDRus", "MINGDRds", "MINGDRus",
    "BLUPPERLIMITds", "BLUPPERLIMITus",
    "LOS_PERSISTENCYds", "LOS_PERSISTENCYus", "LOR_PERSISTENCYds", "LOR_PERSISTENCYus",
    "LOM_PERSISTENCYds", "LOM_PERSISTENCYus",
    "REINIT_TIME_THRESHOLDds", "REINIT_TIME_THRESHOLDus", "LOW_ETR_THRESHOLDds", "LOW_ETR_THRESHOLDus",
    "ACEMODE", "ACEP2N2", "ALLOWACEON",
    "DTA_MODE", "MAXMds", "MINMds", "cDTA_MINMds", "cDTA_MAXMds", "cDTA_ENABLE", "DTA_REPORTING_WIN",
};

// clang-format on

template <typename Visit>
constexpr void forEachField(const Visit& visit) {
  for (const ConfigWord& word : kConfigWords) {
    for (const ConfigField& field : word.fields) {
      if (field.exists()) {
        visit(field);
      }
    }
  }
  for (const ConfigField& field : unset_rows::kFields) {
    visit(field);
  }
}

constexpr size_t numberOfFields() {
  size_t number = 0;
  forEachField([&number](const ConfigField&) { number++; });
  return number;
}

// A name without a field, or with two, does not compile.
constexpr const ConfigField* fieldNamed(std::string_view name) {
  const ConfigField* found = nullptr;
  int number = 0;
  forEachField([&](const ConfigField& field) {
    if (field.name == name) {
      found = &field;
      number++;
    }
  });
  return number == 1 ? found : throw "not one field has this name";
}

constexpr auto kShown = [] {
  std::array<const ConfigField*, std::size(kShowOrder)> fields{};
  std::ranges::transform(kShowOrder, fields.begin(), fieldNamed);
  return fields;
}();

constexpr bool namesDiffer(std::span<const std::string_view> names) {
  return std::ranges::all_of(names, [names](auto name) { return std::ranges::count(names, name) == 1; });
}

static_assert(namesDiffer(kShowOrder) && numberOfFields() == std::size(kShowOrder),
              "the order of `show` does not name every field once");
static_assert(std::ranges::all_of(kShown, [](const ConfigField* field) { return labelFits(*field); }),
              "a label is longer than its column");

// ---- How it is printed ----

void printLine(const LabelledLines& lines, std::string_view label, ConfigForm form, int64_t value) {
  const auto number = static_cast<uint32_t>(value);
  switch (form) {
    case ConfigForm::kUnsigned:
      lines.print(label, number);
      break;
    case ConfigForm::kSigned:
    case ConfigForm::kRanges:
    case ConfigForm::kBreakpoints:
      lines.print(label, static_cast<int32_t>(number));
      break;
    case ConfigForm::kSignedAndBlank:
      lines.printAs(label, "{} ", static_cast<int32_t>(number));
      break;
    case ConfigForm::kHexadecimal:
      lines.printAs(label, "{:x}", number);
      break;
    case ConfigForm::kFlag:
      lines.printFlag(label, value != 0);
      break;
  }
}

void printEntryLine(const LabelledLines& lines, const ConfigField& list, int index, const char* part,
                    int64_t value) {
  printLine(lines, fmt::format("{}[{:2}].{}", list.label, index, part), list.form, value);
}

void printRanges(const LabelledLines& lines, const ConfigField& list, const QVR_lineConfig_t& config) {
  for (int i = 0; i < QVR_K_MAX_SUBCARRIER_RANGES; i++) {
    const ConfigValues range = list.load(config, i);
    if (range.first == 0 && range.second == 0) {
      return;
    }
    printEntryLine(lines, list, i, "startScIdx", range.first);
    printEntryLine(lines, list, i, "stopScIdx", range.second);
  }
}

void printBreakpoints(const LabelledLines& lines, const ConfigField& list, const QVR_lineConfig_t& config) {
  for (int i = 0; i < QVR_K_MAX_PSD_BREAKPOINTS; i++) {
    const ConfigValues breakpoint = list.load(config, i);
    if (breakpoint.first == 0) {
      return;
    }
    printEntryLine(lines, list, i, "subCarrierIndex", breakpoint.first);
    printEntryLine(lines, list, i, "PSDlevel", breakpoint.second);
  }
}

void print(const LabelledLines& lines, const ConfigField& field, const QVR_lineConfig_t& config) {
  switch (field.form) {
    case ConfigForm::kRanges:
      printRanges(lines, field, config);
      break;
    case ConfigForm::kBreakpoints:
      printBreakpoints(lines, field, config);
      break;
    default:
      printLine(lines, field.label, field.form, field.load(config, 0).first);
      break;
  }
}

}  // namespace

void printConfigParams(cli_def* xi_cli, QVR_lineId_t /*xi_lineId*/, const QVR_lineConfig_t& xi_config) {
  const LabelledLines lines(xi_cli, kLabelWidth);
  for (const ConfigField* field : kShown) {
    print(lines, *field, xi_config);
  }
}

}  // namespace gfast::console
