// Configuration mode: a line configuration that is edited word by word, then shown, saved or read anew. The
// record is the console's; editing it asks no chip.
#pragma once

#include <libcli.h>
#include <qvr.h>

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

// The record being edited: line 0's configuration when the console starts and after a restart of the system.
// Of the command thread, and kept from one session to the next.
extern QVR_lineConfig_t configParams;

// The words of configuration mode.
std::span<const Command> configCommands();

// clang-format off

// The commands that set one member each: X(handler, keyword).
#define CONFIG_MEMBER_COMMANDS(X) \
  X(CLI_setNoiseMargin, TARSNRM) \
  X(CLI_setNumberOfDSsymbols, Mds) \
  X(CLI_setCyclicExtension, CE) \
  X(CLI_setVectoringEnableDisable, FEXT_CANCEL_ENABLE) \
  X(CLI_setSRAEnableDisable, SRA_ENABLE) \
  X(CLI_setSubcarrierMasking, CARMASK) \
  X(CLI_setPSDMASK, PSDMASK) \
  X(CLI_setRFIBANDS, RFIBAND) \
  X(CLI_setIARBANDS, IARBANDS) \
  X(CLI_setUPBOPSDA, UPBOPSDA) \
  X(CLI_setUPBOPSDB, UPBOPSDB) \
  X(CLI_setUPBOKL, UPBOKL) \
  X(CLI_setUPBOKLF, UPBOKLF) \
  X(CLI_setUPBOKLREF, UPBOKLREF) \
  X(CLI_setMAXNDR, MAXNDR) \
  X(CLI_setINPMIN_SHINE, INPMIN_SHINE) \
  X(CLI_setINPMIN_REIN, INPMIN_REIN) \
  X(CLI_setIAT_REIN, IAT_REIN) \
  X(CLI_setSHINERATIO, SHINERATIO) \
  X(CLI_setRTX_TESTMODE, RTX_TESTMODE) \
  X(CLI_setBitLoadingUpperLimit, BLUPPERLIMIT) \
  X(CLI_setDELAYMAX, DELAYMAX) \
  X(CLI_setMAXSNRM, MAXSNRM) \
  X(CLI_setMINSNRM, MINSNRM) \
  X(CLI_setSRA_USNRM, SRA_USNRM) \
  X(CLI_setSRA_UTIME, SRA_UTIME) \
  X(CLI_setSRA_DSNRM, SRA_DSNRM) \
  X(CLI_setSRA_DTIME, SRA_DTIME) \
  X(CLI_setFRA_TIME, FRA_TIME) \
  X(CLI_setFRA_NTONES, FRA_NTONES) \
  X(CLI_setFRA_RTXUC, FRA_RTXUC) \
  X(CLI_setFRA_VENDISC, FRA_VENDISC) \
  X(CLI_setREINIT_TIME_THRESHOLD, REINIT_TIME_THRESHOLD) \
  X(CLI_setLOS_PERSISTENCY, LOS_PERSISTENCY) \
  X(CLI_setLOM_PERSISTENCY, LOM_PERSISTENCY) \
  X(CLI_setLOR_PERSISTENCY, LOR_PERSISTENCY) \
  X(CLI_setLOW_ETR_THRESHOLD, LOW_ETR_THRESHOLD) \
  X(CLI_setMINETR, MINETR) \
  X(CLI_setMAXATP, MAXATP) \
  X(CLI_setRNRATIO, RNRATIO) \
  X(CLI_setTPS_TESTMODE, TPS_TESTMODE) \
  X(CLI_setDRA_TESTMODE, DRA_TESTMODE) \
  X(CLI_setACEMODE, ACEMODE) \
  X(CLI_setACEP2N2, ACEP2N2) \
  X(CLI_setALLOWACEON, ALLOWACEON) \
  X(CLI_setDTA_MODE, DTA_MODE) \
  X(CLI_setMINMds, MINMds) \
  X(CLI_setMAXMds, MAXMds) \
  X(CLI_setcDTA_MAXMds, cDTA_MAXMds) \
  X(CLI_setcDTA_MINMds, cDTA_MINMds) \
  X(CLI_setcDTA_ENABLE, cDTA_ENABLE) \
  X(CLI_setTARSNRM_RMC, TARSNRM_RMC) \
  X(CLI_setMINSNRM_RMC, MINSNRM_RMC) \
  X(CLI_setMAXBL_RMC, MAXBL_RMC)

// clang-format on

#define DECLARE_CONFIG_MEMBER_COMMAND(handler, keyword) \
  int handler(cli_def* cli, const char* command, char* argv[], int argc);
CONFIG_MEMBER_COMMANDS(DECLARE_CONFIG_MEMBER_COMMAND)
#undef DECLARE_CONFIG_MEMBER_COMMAND

int CLI_setDefaultConfigParams(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_saveLineConfig(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showConfigParams(cli_def* cli, const char* command, char* argv[], int argc);

// A configuration that cannot be read answers 1 to libcli.
int CLI_getConfigParams(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
