#include "qvrcli/config/config_commands.h"

#include "qvrcli/config/config_members.h"
#include "qvrcli/config/config_text.h"
#include "qvrcli/text/argument_reader.h"

namespace gfast::console {

QVR_lineConfig_t configParams;

namespace {

constexpr int kNotRead = 1;

int editMember(cli_def* cli, const ConfigMember& member, char* argv[]) {
  const char* const refusal = setConfigMember(member, argv, configParams);
  if (refusal != nullptr) {
    cli_print(cli, "%s", refusal);
  }
  return CLI_OK;
}

}  // namespace

#define DEFINE_CONFIG_MEMBER_COMMAND(handler, keyword)                             \
  int handler(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) { \
    static const ConfigMember& member = configMember(#keyword);                    \
    return editMember(cli, member, argv);                                          \
  }
CONFIG_MEMBER_COMMANDS(DEFINE_CONFIG_MEMBER_COMMAND)
#undef DEFINE_CONFIG_MEMBER_COMMAND

int CLI_setDefaultConfigParams(cli_def* /*cli*/, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  QVR_getLineConfig(0, &configParams);
  return CLI_OK;
}

int CLI_saveLineConfig(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (!words.refused()) {
    QVR_lineConfig_t current{};
    QVR_getLineConfig(line, &current);
    QVR_setLineConfig(line, &configParams);
  }
  return CLI_OK;
}

int CLI_showConfigParams(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  printConfigParams(cli, 0, configParams);
  return CLI_OK;
}

int CLI_getConfigParams(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  if (QVR_STATUS_ERROR(QVR_getLineConfig(line, &configParams))) {
    cli_print(cli, "QVR_getLineConfig failed");
    return kNotRead;
  }
  printConfigParams(cli, line, configParams);
  return CLI_OK;
}

namespace {

constexpr Command kCommands[] = {
    config("TARSNRM", "Set target noise margin", CLI_setNoiseMargin, exactly<2>,
           "TARSNRM (ds | us) <0..310> * (0.1) dB"),
    config("Mds", "Set number of downstream symbol periods in a TDD frame ", CLI_setNumberOfDSsymbols,
           exactly<1>, "Mds <10..32>"),
    config("CE", "Set cyclic extension", CLI_setCyclicExtension, exactly<1>,
           "CE <4, 8, 10, 12, 14, 16, 20, 24, 30 or 33>"),
    config("FEXT_CANCEL_ENABLE", "Enable/Disable FEXT cancellation", CLI_setVectoringEnableDisable,
           exactly<2>, "FEXT_CANCEL_ENABLE (ds | us) (T | F)"),
    config("SRA_ENABLE", "Enable/Disable SRA function", CLI_setSRAEnableDisable, exactly<2>,
           "SRA_ENABLE (ds | us) (T | F)"),
    config("CARMASK", "Set sub-carrier masking", CLI_setSubcarrierMasking, exactly<4>,
           "CARMASK (ds | us) <index> <start sub-carrier> <stop sub-carrier>"),
    config("PSDMASK", "Set PSD mask", CLI_setPSDMASK, exactly<4>,
           "PSDMASK (ds | us) <index> <sub-carrier> <PSD level>"),
    config("RFIBAND", "Set RFI bands", CLI_setRFIBANDS, exactly<3>,
           "RFIBAND <index> <start sub-carrier> <stop sub-carrier>"),
    config("IARBANDS", "Set IAR bands", CLI_setIARBANDS, exactly<1>, "IARBANDS <bitmask>"),
    config("UPBOPSDA", "Set parameter a for upstream power back-off reference PSD", CLI_setUPBOPSDA,
           exactly<1>, "UPBOPSDA <0..4095> * (0.01 dBm/Hz)"),
    config("UPBOPSDB", "Set parameter b for upstream power back-off reference PSD", CLI_setUPBOPSDB,
           exactly<1>, "UPBOPSDB <0..4095> * (0.01 dBm/Hz)"),
    config("UPBOKL", "Set upstream electrical length", CLI_setUPBOKL, exactly<1>,
           "UPBOKL <0..1280> * (0.1 dB)"),
    config("UPBOKLF", "Set force electrical length flag", CLI_setUPBOKLF, exactly<1>, "UPBOKLF (T | F)"),
    config("UPBOKLREF", "Set UPBO reference electrical length per band", CLI_setUPBOKLREF, exactly<1>,
           "UPBOKL <0, 18..255> * (0.1 dB)"),
    config("MAXNDR", "Set MAXNDR masking", CLI_setMAXNDR, exactly<2>,
           "MAXNDR (ds | us) <0..4294967295> * (1000) bits/sec"),
    config("INPMIN_SHINE", "Set minimum impulse noise protection against SHINE ", CLI_setINPMIN_SHINE,
           exactly<2>, "INPMIN_SHINE (ds | us) <0..520> (0 to 520 symbol periods)"),
    config("INPMIN_REIN", "Set minimum impulse noise protection against REIN", CLI_setINPMIN_REIN, exactly<2>,
           "INPMIN_REIN (ds | us) <0..63> (0 to 63 symbol periods)"),
    config("IAT_REIN", "Set REIN Inter-arrival time ", CLI_setIAT_REIN, exactly<2>,
           "IAT_REIN (ds | us) <0..3> (0=100 Hz, 1=120 Hz, 2=300 Hz, and 3=360 Hz"),
    config("SHINERATIO", "Set SHINE ratio ", CLI_setSHINERATIO, exactly<2>,
           "SHINERATIO (ds | us) <0..100> (0 to 0.1)"),
    config("RTX_TESTMODE", "Set RTX TESTMODE", CLI_setRTX_TESTMODE, exactly<2>,
           "RTX_TESTMODE (ds | us) (T | F)"),
    config("BLUPPERLIMIT", "Set bit-loading upper limit ", CLI_setBitLoadingUpperLimit, exactly<2>,
           "BLUPPERLIMIT (ds | us) <0..14>"),
    config("DELAYMAX", "Set maximum allowed delay for retransmission", CLI_setDELAYMAX, exactly<2>,
           "DELAYMAX (ds | us) <4..252> * (0.25) msecs"),
    config("MAXSNRM", "Set maximum noise margin", CLI_setMAXSNRM, exactly<2>,
           "MAXSNRM (ds | us) <0..310,511> * (0.1) dB"),
    config("MINSNRM", "Set minimum noise margin", CLI_setMINSNRM, exactly<2>,
           "MINSNRM (ds | us) <0..310> * (0.1) dB"),
    config("SRA_USNRM", "Set upshift noise margin", CLI_setSRA_USNRM, exactly<2>,
           "SRA_USNRM (ds | us) <0..310> * (0.1) dB"),
    config("SRA_UTIME", "Set time-interval above upshift noise margin", CLI_setSRA_UTIME, exactly<2>,
           "SRA_UTIME (ds | us) <0..16383> secs "),
    config("SRA_DSNRM", "Set downshift noise margin", CLI_setSRA_DSNRM, exactly<2>,
           "SRA_DSNRM (ds | us) <0..310> * (0.1) dB"),
    config("SRA_DTIME", "Set time-interval below downshift noise margin", CLI_setSRA_DTIME, exactly<2>,
           "SRA_DTIME (ds | us) <0..16383> secs "),
    config("FRA_TIME", "Set duration of FRA triggering time window ", CLI_setFRA_TIME, exactly<2>,
           "FRA_TIME (ds | us) <1..8> * logical frame length "),
    config("FRA_NTONES", "Set minimum percentage of loaded sub-carriers", CLI_setFRA_NTONES, exactly<2>,
           "FRA_NTONES (ds | us) <0..100> percent"),
    config("FRA_RTXUC", "Set minimum number of rtx-uc anomalies", CLI_setFRA_RTXUC, exactly<2>,
           "FRA_RTXUC (ds | us) <0..1023> rtx-uc anomalies"),
    config("FRA_VENDISC", "Enable/Disable vendor discretionary FRA triggering criteria", CLI_setFRA_VENDISC,
           exactly<2>, "FRA_VENDISC (ds | us) (T | F)"),
    config("REINIT_TIME_THRESHOLD", "Set threshold for SES and eoc timeout reinit policy conditions",
           CLI_setREINIT_TIME_THRESHOLD, exactly<2>, "REINIT_TIME_THRESHOLD (ds | us) <5..31> secs"),
    config("LOS_PERSISTENCY", "Set LOS defect persistency", CLI_setLOS_PERSISTENCY, exactly<2>,
           "LOS_PERSISTENCY (ds | us) <1..20> (0.1 * secs)"),
    config("LOM_PERSISTENCY", "Set LOM defect persistency", CLI_setLOM_PERSISTENCY, exactly<2>,
           "LOM_PERSISTENCY (ds | us) <2..20> (0.1 * secs)"),
    config("LOR_PERSISTENCY", "Set LOR defect persistency", CLI_setLOR_PERSISTENCY, exactly<2>,
           "LOR_PERSISTENCY (ds | us) <1..20> (0.1 * secs)"),
    config("LOW_ETR_THRESHOLD", "Set threshold for low ETR reinit policy condition", CLI_setLOW_ETR_THRESHOLD,
           exactly<2>, "LOW_ETR_THRESHOLD (ds | us) <0..30> secs"),
    config("MINETR", "Set minimum ETR limit", CLI_setMINETR, exactly<2>,
           "MINETR (ds | us) <0..4294967295> * (1000) bits/sec"),
    config("MAXATP", "Set maximum aggregate transmit power", CLI_setMAXATP, exactly<2>,
           "MAXATP (ds | us) <-310..+310> * (0.1) dBm"),
    config("RNRATIO", "Set RFEC/NFEC ratio", CLI_setRNRATIO, exactly<2>,
           "RNRATIO (ds | us) <0..8> (0 to 0.25)"),
    config("TPS_TESTMODE", "Set TPS TESTMODE", CLI_setTPS_TESTMODE, exactly<1>, "TPS_TESTMODE (T | F)"),
    config("DRA_TESTMODE", "Set DRA TESTMODE", CLI_setDRA_TESTMODE, exactly<1>, "DRA_TESTMODE (T | F)"),
    config("ACEMODE", "Set ACEMODE", CLI_setACEMODE, exactly<1>, "ACEMODE (0 | 1)"),
    config("ACEP2N2", "Set ACEP2N2", CLI_setACEP2N2, exactly<1>, "ACEP2N2 (0 | 1)"),
    config("ALLOWACEON", "Set ALLOWACEON", CLI_setALLOWACEON, exactly<1>, "ALLOWACEON (0 | 1)"),
    config("DTA_MODE", "Set DTA_MODE", CLI_setDTA_MODE, exactly<1>, "DTA_MODE <0, 1, 2>"),
    config("MINMds", "Set MINMds", CLI_setMINMds, exactly<1>, "MINMds <5..30>"),
    config("MAXMds", "Set MAXMds", CLI_setMAXMds, exactly<1>, "MAXMds <5..30>"),
    config("cDTA_MAXMds", "Set cDTA_MAXMds", CLI_setcDTA_MAXMds, exactly<1>, "cDTA_MAXMds <8..30>"),
    config("cDTA_MINMds", "Set cDTA_MINMds", CLI_setcDTA_MINMds, exactly<1>, "cDTA_MINMds <8..30>"),
    config("cDTA_ENABLE", "Set cDTA_ENABLE", CLI_setcDTA_ENABLE, exactly<1>, "cDTA_ENABLE <T | F>"),
    config("TARSNRM_RMC", "Set TARSNRM-RMCds/us", CLI_setTARSNRM_RMC, exactly<2>,
           "TARSNRM_RMC (ds | us) <0..310> * (0.1) dB"),
    config("MINSNRM_RMC", "Set MINSNRM-RMCds/us", CLI_setMINSNRM_RMC, exactly<2>,
           "MINSNRM_RMC (ds | us) <0..310> * (0.1) dB"),
    config("MAXBL_RMC", "Set MAXBL-RMCds/us", CLI_setMAXBL_RMC, exactly<2>, "MAXBL_RMC (ds | us) <2..6>"),
    config("restore", "Restore default line parameters", CLI_setDefaultConfigParams, exactly<0>,
           "default-params"),
    config("save", "Save configuration parameters to line (same as apply)", CLI_saveLineConfig, between<0, 1>,
           "save <line-id>"),
    config("show", "Show configuration parameters", CLI_showConfigParams, exactly<0>, "show"),
    config("get", "Get configuration parameters for line", CLI_getConfigParams, between<0, 1>,
           "get [<line-id>] : { 0 }"),
};

}  // namespace

std::span<const Command> configCommands() {
  return kCommands;
}

}  // namespace gfast::console
