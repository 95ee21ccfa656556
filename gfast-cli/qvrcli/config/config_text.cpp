#include "qvrcli/config/config_text.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "qvrcli/text/line_buffer.h"

namespace gfast::console {

namespace {

// How a value is written. Signed fields that are written unsigned show a negative value as a large number.
enum class Form { kUnsigned, kSigned, kSignedAndBlank, kHexadecimal, kFlag };
using enum Form;

struct Field {
  const char* label;
  Form form;
  int64_t value;
};

constexpr size_t kLabelWidth = 40;

const char* padding(const char* label) {
  return filler(' ', static_cast<uint8_t>(kLabelWidth - std::strlen(label)));
}

void printField(cli_def* cli, const Field& field) {
  const char* const space = padding(field.label);
  const auto number = static_cast<uint32_t>(field.value);
  switch (field.form) {
    case kUnsigned:
      cli_print(cli, "%s %s %" PRIu32, field.label, space, number);
      break;
    case kSigned:
      cli_print(cli, "%s %s %" PRId32, field.label, space, static_cast<int32_t>(number));
      break;
    case kSignedAndBlank:
      cli_print(cli, "%s %s %" PRId32 " ", field.label, space, static_cast<int32_t>(number));
      break;
    case kHexadecimal:
      cli_print(cli, "%s %s %" PRIx32, field.label, space, number);
      break;
    case kFlag:
      cli_print(cli, "%s %s %c", field.label, space, field.value != 0 ? 'T' : 'F');
      break;
  }
}

void print(cli_def* cli, std::initializer_list<Field> fields) {
  for (const Field& field : fields) {
    printField(cli, field);
  }
}

void printListed(cli_def* cli, const char* list, int index, const char* part, int value) {
  char label[kLabelWidth];
  std::snprintf(label, sizeof label, "%s[%2d].%s", list, index, part);
  printField(cli, {label, kSigned, value});
}

void printRanges(cli_def* cli, const char* list,
                 const G9972_subCarrierIdxRange_t (&ranges)[QVR_K_MAX_SUBCARRIER_RANGES]) {
  for (int i = 0; i < QVR_K_MAX_SUBCARRIER_RANGES; i++) {
    if (ranges[i].startSubcarrierIdx == 0 && ranges[i].stopSubcarrierIdx == 0) {
      return;
    }
    printListed(cli, list, i, "startScIdx", ranges[i].startSubcarrierIdx);
    printListed(cli, list, i, "stopScIdx", ranges[i].stopSubcarrierIdx);
  }
}

void printBreakpoints(cli_def* cli, const char* list,
                      const G9972_PSDMASKdescriptor_t (&breakpoints)[QVR_K_MAX_PSD_BREAKPOINTS]) {
  for (int i = 0; i < QVR_K_MAX_PSD_BREAKPOINTS && breakpoints[i].subCarrierIndex != 0; i++) {
    printListed(cli, list, i, "subCarrierIndex", breakpoints[i].subCarrierIndex);
    printListed(cli, list, i, "PSDlevel", breakpoints[i].PSDlevel);
  }
}

void printFrame(cli_def* cli, const QVR_TDDProfile_t& tdd) {
  print(cli, {{"MF", kUnsigned, tdd.MF}, {"Mds", kUnsigned, tdd.Mds}, {"CE", kSignedAndBlank, tdd.CE}});
}

void printSpectrum(cli_def* cli, const QVR_lineSpectrumProfile_t& spectrum) {
  printRanges(cli, "CARMASKds", spectrum.CARMASKds);
  printRanges(cli, "CARMASKus", spectrum.CARMASKus);
  printBreakpoints(cli, "PSDMASKds", spectrum.PSDMASKds);
  printBreakpoints(cli, "PSDMASKus", spectrum.PSDMASKus);
  print(cli, {{"MAXATPds", kSigned, spectrum.MAXATPds}, {"MAXATPus", kSigned, spectrum.MAXATPus}});
}

void printRfi(cli_def* cli, const QVR_rfiProfile_t& rfi) {
  printRanges(cli, "RFIBANDS", rfi.RFIBANDS);
  print(cli, {{"IARBANDS", kHexadecimal, rfi.IARBANDS}});
}

void printUpbo(cli_def* cli, const QVR_upboProfile_t& upbo) {
  print(cli, {{"UPBOPSDA", kUnsigned, upbo.UPBOPSDA},
              {"UPBOPSDB", kUnsigned, upbo.UPBOPSDB},
              {"UPBOKL", kUnsigned, upbo.UPBOKL},
              {"UPBOKLF", kFlag, upbo.UPBOKLF},
              {"UPBOKLREF", kUnsigned, upbo.UPBOKLREF}});
}

void printMargins(cli_def* cli, const QVR_noiseMarginProfile_t& margin) {
  print(cli, {{"TARSNRMds", kUnsigned, margin.TARSNRMds},
              {"TARSNRMus", kSigned, margin.TARSNRMus},
              {"MAXSNRMus", kUnsigned, margin.MAXSNRMus},
              {"MINSNRMds", kUnsigned, margin.MINSNRMds},
              {"MINSNRMus", kSigned, margin.MINSNRMus},
              {"TARSNRM_RMCds", kUnsigned, margin.TARSNRM_RMCds},
              {"TARSNRM_RMCus", kUnsigned, margin.TARSNRM_RMCus},
              {"MINSNRM_RMCds", kUnsigned, margin.MINSNRM_RMCds},
              {"MINSNRM_RMCus", kUnsigned, margin.MINSNRM_RMCus},
              {"MAXBL_RMCds", kUnsigned, margin.MAXBL_RMCds},
              {"MAXBL_RMCus", kUnsigned, margin.MAXBL_RMCus}});
}

void printFunctions(cli_def* cli, const QVR_lineConfig_t& config) {
  print(cli, {{"RNRATIOds", kSigned, config.retransmissionProfile.RNRATIOds},
              {"RNRATIOus", kSigned, config.retransmissionProfile.RNRATIOus},
              {"FEXT_CANCEL_ENABLEds", kFlag, config.vectoringProfile.FEXT_CANCEL_ENABLEds},
              {"FEXT_CANCEL_ENABLEus", kFlag, config.vectoringProfile.FEXT_CANCEL_ENABLEus},
              {"SRA_ENABLEds", kFlag, config.sraProfile.SRA_ENABLEds},
              {"SRA_ENABLEus", kFlag, config.sraProfile.SRA_ENABLEus}});
}

void printSra(cli_def* cli, const QVR_noiseMarginProfile_t& margin) {
  print(cli, {{"SRA_USNRMds", kUnsigned, margin.SRA_USNRMds},
              {"SRA_UTIMEds", kUnsigned, margin.SRA_UTIMEds},
              {"SRA_USNRMus", kUnsigned, margin.SRA_USNRMus},
              {"SRA_UTIMEus", kUnsigned, margin.SRA_UTIMEus},
              {"SRA_DSNRMds", kUnsigned, margin.SRA_DSNRMds},
              {"SRA_DTIMEds", kUnsigned, margin.SRA_DTIMEds},
              {"SRA_DSNRMus", kUnsigned, margin.SRA_DSNRMus},
              {"SRA_DTIMEus", kUnsigned, margin.SRA_DTIMEus}});
}

void printFra(cli_def* cli, const QVR_fastRateAdaptationProfile_t& fra) {
  print(cli, {{"FRA_TIMEds", kUnsigned, fra.FRA_TIMEds},
              {"FRA_TIMEus", kUnsigned, fra.FRA_TIMEus},
              {"FRA_RTXUCds", kUnsigned, fra.FRA_RTXUCds},
              {"FRA_RTXUCus", kUnsigned, fra.FRA_RTXUCus},
              {"FRA_NTONESds", kUnsigned, fra.FRA_NTONESds},
              {"FRA_NTONESus", kUnsigned, fra.FRA_NTONESus},
              {"FRA_VENDISCds", kFlag, fra.FRA_VENDISCds},
              {"FRA_VENDISCus", kFlag, fra.FRA_VENDISCus}});
}

void printRetransmission(cli_def* cli, const QVR_retransmissionProfile_t& rtx) {
  print(cli, {{"INPMIN_SHINEds", kSigned, rtx.INPMIN_SHINEds},
              {"INPMIN_SHINEus", kSigned, rtx.INPMIN_SHINEus},
              {"INPMIN_REINds", kSigned, rtx.INPMIN_REINds},
              {"INPMIN_REINus", kSigned, rtx.INPMIN_REINus},
              {"IAT_REINds", kSigned, rtx.IAT_REINds},
              {"IAT_REINus", kSigned, rtx.IAT_REINus},
              {"SHINERATIOds", kSigned, rtx.SHINERATIOds},
              {"SHINERATIOus", kSigned, rtx.SHINERATIOus},
              {"DELAYMAXds", kSigned, rtx.DELAYMAXds},
              {"DELAYMAXus", kSigned, rtx.DELAYMAXus},
              {"RTX_TESTMODEds", kFlag, rtx.RTX_TESTMODEds},
              {"RTX_TESTMODEus", kFlag, rtx.RTX_TESTMODEus}});
}

void printDataPath(cli_def* cli, const QVR_dataPathConfigProfile_t& path) {
  print(cli, {{"TPS_TESTMODE", kFlag, path.TPS_TESTMODE}, {"DRA_TESTMODE", kFlag, path.DRA_TESTMODE}});
}

void printRates(cli_def* cli, const QVR_dataRateProfile_t& rate) {
  print(cli, {{"MAXNDRds", kUnsigned, rate.MAXNDRds},
              {"MAXNDRus", kUnsigned, rate.MAXNDRus},
              {"MINETRds", kUnsigned, rate.MINETRds},
              {"MINETRus", kUnsigned, rate.MINETRus},
              {"MAXGDRds", kUnsigned, rate.MAXGDRds},
              {"MAXGDRus", kUnsigned, rate.MAXGDRus},
              {"MINGDRds", kUnsigned, rate.MINGDRds},
              {"MINGDRds", kUnsigned, rate.MINGDRus},  // scripts know the upstream rate by this label
              {"BLUPPERLIMITds", kUnsigned, rate.BLUPPERLIMITds},
              {"BLUPPERLIMITus", kUnsigned, rate.BLUPPERLIMITus}});
}

void printReinit(cli_def* cli, const QVR_reinitPolicyProfile_t& reinit) {
  print(cli, {{"LOS_PERSISTENCYds", kUnsigned, reinit.LOS_PERSISTENCYds},
              {"LOS_PERSISTENCYus", kUnsigned, reinit.LOS_PERSISTENCYus},
              {"LOR_PERSISTENCYds", kUnsigned, reinit.LOR_PERSISTENCYds},
              {"LOR_PERSISTENCYus", kUnsigned, reinit.LOR_PERSISTENCYus},
              {"LOM_PERSISTENCYds", kUnsigned, reinit.LOM_PERSISTENCYds},
              {"LOM_PERSISTENCYus", kUnsigned, reinit.LOM_PERSISTENCYus},
              {"REINIT_TIME_THRESHOLDds", kUnsigned, reinit.REINIT_TIME_THRESHOLDds},
              {"REINIT_TIME_THRESHOLDus", kUnsigned, reinit.REINIT_TIME_THRESHOLDus},
              {"LOW_ETR_THRESHOLDds", kUnsigned, reinit.LOW_ETR_THRESHOLDds},
              {"LOW_ETR_THRESHOLDus", kUnsigned, reinit.LOW_ETR_THRESHOLDus}});
}

void printAce(cli_def* cli, const QVR_AceConfigProfile_t& ace) {
  print(cli, {{"ACEMODE", kUnsigned, ace.ACEMODE},
              {"ACEP2N2", kUnsigned, ace.ACEP2N2},
              {"ALLOWACEON", kUnsigned, ace.ALLOWACEON}});
}

void printDta(cli_def* cli, const QVR_DTAProfile_t& dta) {
  print(cli, {{"DTA_MODE", kUnsigned, dta.DTA_MODE},
              {"MAXMds", kUnsigned, dta.MAXMds},
              {"MINMds", kUnsigned, dta.MINMds},
              {"cDTA_MINMds", kUnsigned, dta.cDTA_MINMds},
              {"cDTA_MAXMds", kUnsigned, dta.cDTA_MAXMds},
              {"cDTA_ENABLE", kFlag, dta.cDTA_ENABLE},
              {"DTA_REPORTING_WIN", kUnsigned, dta.DTA_REPORTING_WIN}});
}

}  // namespace

void printConfigParams(cli_def* xi_cli, QVR_lineId_t /*xi_lineId*/, const QVR_lineConfig_t& xi_config) {
  printFrame(xi_cli, xi_config.tddProfile);
  printSpectrum(xi_cli, xi_config.lineSpectrumProfile);
  printRfi(xi_cli, xi_config.rfiProfile);
  printUpbo(xi_cli, xi_config.upboProfile);
  printMargins(xi_cli, xi_config.noiseMarginProfile);
  printFunctions(xi_cli, xi_config);
  printSra(xi_cli, xi_config.noiseMarginProfile);
  printFra(xi_cli, xi_config.fastRateAdaptationProfile);
  printRetransmission(xi_cli, xi_config.retransmissionProfile);
  printDataPath(xi_cli, xi_config.dataPathConfigProfile);
  printRates(xi_cli, xi_config.dataRateProfile);
  printReinit(xi_cli, xi_config.reinitPolicyProfile);
  printAce(xi_cli, xi_config.aceConfigProfile);
  printDta(xi_cli, xi_config.dtaProfile);
}

}  // namespace gfast::console
