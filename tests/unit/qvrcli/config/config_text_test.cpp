// How a line configuration is printed: given these fields, these lines are printed.
#include "qvrcli/config/config_text.h"

#include <fstream>

#include "qvrcli/config/config_commands.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::Contains;
using testing::ElementsAre;

// All numbers differ from each other, and neighbouring flags too.
QVR_lineConfig_t everyFieldDifferent() {
  QVR_lineConfig_t config{};
  config.tddProfile.MF = static_cast<G9972_MF_t>(100001);
  config.tddProfile.Mds = 11;
  config.tddProfile.CE = 12;
  config.lineSpectrumProfile.CARMASKds[0] = {0, 41};
  config.lineSpectrumProfile.CARMASKds[1] = {42, 43};
  config.lineSpectrumProfile.CARMASKds[3] = {1, 2};
  config.lineSpectrumProfile.CARMASKus[0] = {2044, 2047};
  config.lineSpectrumProfile.PSDMASKds[0] = {300, 130};
  config.lineSpectrumProfile.PSDMASKds[1] = {301, 131};
  config.lineSpectrumProfile.MAXATPds = -310;
  config.lineSpectrumProfile.MAXATPus = 1001;
  config.rfiProfile.RFIBANDS[0] = {500, 501};
  config.rfiProfile.RFIBANDS[1] = {502, 503};
  config.rfiProfile.RFIBANDS[2] = {504, 505};
  config.rfiProfile.IARBANDS = 2748;
  config.upboProfile.UPBOPSDA = 21008;
  config.upboProfile.UPBOPSDB = 21015;
  config.upboProfile.UPBOKL = 21022;
  config.upboProfile.UPBOKLF = FALSE;
  config.upboProfile.UPBOKLREF = 21029;
  config.noiseMarginProfile.TARSNRMds = -5;
  config.noiseMarginProfile.TARSNRMus = -1036;
  config.noiseMarginProfile.MAXSNRMus = 1043;
  config.noiseMarginProfile.MINSNRMds = 1050;
  config.noiseMarginProfile.MINSNRMus = -1057;
  config.noiseMarginProfile.TARSNRM_RMCds = 1064;
  config.noiseMarginProfile.TARSNRM_RMCus = 1071;
  config.noiseMarginProfile.MINSNRM_RMCds = -1078;
  config.noiseMarginProfile.MINSNRM_RMCus = 1085;
  config.noiseMarginProfile.MAXBL_RMCds = 13;
  config.noiseMarginProfile.MAXBL_RMCus = 14;
  config.retransmissionProfile.RNRATIOds = 15;
  config.retransmissionProfile.RNRATIOus = 16;
  config.vectoringProfile.FEXT_CANCEL_ENABLEds = FALSE;
  config.vectoringProfile.FEXT_CANCEL_ENABLEus = TRUE;
  config.sraProfile.SRA_ENABLEds = FALSE;
  config.sraProfile.SRA_ENABLEus = TRUE;
  config.noiseMarginProfile.SRA_USNRMds = 1092;
  config.noiseMarginProfile.SRA_UTIMEds = 21099;
  config.noiseMarginProfile.SRA_USNRMus = -1106;
  config.noiseMarginProfile.SRA_UTIMEus = 21113;
  config.noiseMarginProfile.SRA_DSNRMds = 1120;
  config.noiseMarginProfile.SRA_DTIMEds = 21127;
  config.noiseMarginProfile.SRA_DSNRMus = 1134;
  config.noiseMarginProfile.SRA_DTIMEus = 21141;
  config.fastRateAdaptationProfile.FRA_TIMEds = 17;
  config.fastRateAdaptationProfile.FRA_TIMEus = 18;
  config.fastRateAdaptationProfile.FRA_RTXUCds = 21148;
  config.fastRateAdaptationProfile.FRA_RTXUCus = 21155;
  config.fastRateAdaptationProfile.FRA_NTONESds = 19;
  config.fastRateAdaptationProfile.FRA_NTONESus = 20;
  config.fastRateAdaptationProfile.FRA_VENDISCds = FALSE;
  config.fastRateAdaptationProfile.FRA_VENDISCus = TRUE;
  config.retransmissionProfile.INPMIN_SHINEds = 21162;
  config.retransmissionProfile.INPMIN_SHINEus = 21169;
  config.retransmissionProfile.INPMIN_REINds = 21;
  config.retransmissionProfile.INPMIN_REINus = 22;
  config.retransmissionProfile.IAT_REINds = static_cast<G9972_IAT_REIN_t>(100);
  config.retransmissionProfile.IAT_REINus = static_cast<G9972_IAT_REIN_t>(360);
  config.retransmissionProfile.SHINERATIOds = 23;
  config.retransmissionProfile.SHINERATIOus = 24;
  config.retransmissionProfile.DELAYMAXds = 100079;
  config.retransmissionProfile.DELAYMAXus = 70001;
  config.retransmissionProfile.RTX_TESTMODEds = FALSE;
  config.retransmissionProfile.RTX_TESTMODEus = TRUE;
  config.dataPathConfigProfile.TPS_TESTMODE = FALSE;
  config.dataPathConfigProfile.DRA_TESTMODE = TRUE;
  config.dataRateProfile.MAXNDRds = 4294967295;
  config.dataRateProfile.MAXNDRus = 100092;
  config.dataRateProfile.MINETRds = 100105;
  config.dataRateProfile.MINETRus = 100118;
  config.dataRateProfile.MAXGDRds = 100131;
  config.dataRateProfile.MAXGDRus = 100144;
  config.dataRateProfile.MINGDRds = 100157;
  config.dataRateProfile.MINGDRus = 100170;
  config.dataRateProfile.BLUPPERLIMITds = 25;
  config.dataRateProfile.BLUPPERLIMITus = 26;
  config.reinitPolicyProfile.LOS_PERSISTENCYds = 27;
  config.reinitPolicyProfile.LOS_PERSISTENCYus = 28;
  config.reinitPolicyProfile.LOR_PERSISTENCYds = 29;
  config.reinitPolicyProfile.LOR_PERSISTENCYus = 30;
  config.reinitPolicyProfile.LOM_PERSISTENCYds = 31;
  config.reinitPolicyProfile.LOM_PERSISTENCYus = 32;
  config.reinitPolicyProfile.REINIT_TIME_THRESHOLDds = 33;
  config.reinitPolicyProfile.REINIT_TIME_THRESHOLDus = 34;
  config.reinitPolicyProfile.LOW_ETR_THRESHOLDds = 35;
  config.reinitPolicyProfile.LOW_ETR_THRESHOLDus = 36;
  config.aceConfigProfile.ACEMODE = 100183;
  config.aceConfigProfile.ACEP2N2 = 100196;
  config.aceConfigProfile.ALLOWACEON = 100209;
  config.dtaProfile.DTA_MODE = static_cast<QVR_DTA_MODE_t>(2);
  config.dtaProfile.MAXMds = 37;
  config.dtaProfile.MINMds = 38;
  config.dtaProfile.cDTA_MINMds = 39;
  config.dtaProfile.cDTA_MAXMds = 40;
  config.dtaProfile.cDTA_ENABLE = FALSE;
  config.dtaProfile.DTA_REPORTING_WIN = 3000000017;
  for (int i = 0; i < QVR_K_MAX_PSD_BREAKPOINTS; i++) {
    config.lineSpectrumProfile.PSDMASKus[i] = {static_cast<uint16_t>(400 + i), static_cast<uint8_t>(140 + i)};
  }
  return config;
}

std::string transcript() {
  std::ifstream file(CONFIG_TRANSCRIPT);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Prints a record with `show` in configuration mode.
class ShownConfig : public TypedConsole {
 protected:
  ShownConfig() { typed("configure"); }

  Lines shown(const QVR_lineConfig_t& config) {
    configParams = config;
    return typed("show");
  }

  Lines shownOf(const QVR_lineConfig_t& config, const std::string& label) {
    Lines lines;
    for (const std::string& line : shown(config)) {
      if (line.starts_with(label)) {
        lines.push_back(line);
      }
    }
    return lines;
  }
};

TEST_F(ShownConfig, EqualsTheTranscript) {
  std::string text;
  for (const std::string& line : shown(everyFieldDifferent())) {
    text += line + "\n";
  }
  EXPECT_EQ(text, transcript());
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShownConfig, PrintsAllValuesInOneColumn) {
  for (const std::string& line : shown(everyFieldDifferent())) {
    const size_t column = line.find_last_of(' ', line.size() - 2) + 1;
    EXPECT_EQ(column, 42U) << line;
  }
}

TEST_F(ShownConfig, PrintsANegativeDownstreamMarginAsALargeNumber) {
  QVR_lineConfig_t config{};
  config.noiseMarginProfile.TARSNRMds = -5;
  config.noiseMarginProfile.TARSNRMus = -5;
  EXPECT_THAT(shownOf(config, "TARSNRMds"),
              ElementsAre("TARSNRMds                                 4294967291"));
  EXPECT_THAT(shownOf(config, "TARSNRMus"), ElementsAre("TARSNRMus                                 -5"));
}

TEST_F(ShownConfig, LabelsTheUpstreamMinimumRateDownstream) {
  QVR_lineConfig_t config{};
  config.dataRateProfile.MINGDRds = 1;
  config.dataRateProfile.MINGDRus = 2;
  EXPECT_THAT(shownOf(config, "MINGDR"), ElementsAre("MINGDRds                                  1",
                                                     "MINGDRds                                  2"));
}

TEST_F(ShownConfig, PrintsNothingForEmptyLists) {
  for (const std::string& line : shown(QVR_lineConfig_t{})) {
    EXPECT_EQ(line.find('['), std::string::npos) << line;
  }
}

TEST_F(ShownConfig, EndsAListAtTheFirstEmptyRange) {
  QVR_lineConfig_t config{};
  config.lineSpectrumProfile.CARMASKds[0] = {0, 7};
  config.lineSpectrumProfile.CARMASKds[1] = {10, 20};
  config.lineSpectrumProfile.CARMASKds[5] = {30, 40};
  EXPECT_THAT(shownOf(config, "CARMASK"), ElementsAre("CARMASKds[ 0].startScIdx                  0",
                                                      "CARMASKds[ 0].stopScIdx                   7",
                                                      "CARMASKds[ 1].startScIdx                  10",
                                                      "CARMASKds[ 1].stopScIdx                   20"));
}

TEST_F(ShownConfig, EndsAMaskAtTheFirstBreakpointWithSubcarrier0) {
  QVR_lineConfig_t config{};
  config.lineSpectrumProfile.PSDMASKds[0] = {12, 0};
  config.lineSpectrumProfile.PSDMASKds[1] = {0, 99};
  config.lineSpectrumProfile.PSDMASKds[2] = {13, 1};
  EXPECT_THAT(shownOf(config, "PSDMASK"), ElementsAre("PSDMASKds[ 0].subCarrierIndex             12",
                                                      "PSDMASKds[ 0].PSDlevel                    0"));
}

TEST_F(ShownConfig, PrintsAFullList) {
  QVR_lineConfig_t config{};
  for (auto& range : config.rfiProfile.RFIBANDS) {
    range = {1, 2};
  }
  const Lines lines = shownOf(config, "RFIBANDS");
  EXPECT_EQ(lines.size(), 32U);
  EXPECT_EQ(lines.back(), "RFIBANDS[15].stopScIdx                    2");
}

TEST_F(ShownConfig, PrintsAnyNonzeroFlagAsTrue) {
  QVR_lineConfig_t config{};
  config.upboProfile.UPBOKLF = 2;
  EXPECT_THAT(shown(config), Contains("UPBOKLF                                   T"));
}

TEST_F(ShownConfig, PrintsItsUsageForAnyArgument) {
  EXPECT_THAT(typed("show ?"), ElementsAre("show"));
  EXPECT_THAT(typed("show 1"), ElementsAre("show"));
}

}  // namespace
