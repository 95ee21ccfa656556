#include "qvrcli/vocabulary/command_table.h"

#include <array>
#include <iterator>
#include <vector>

#include "qvrcli/config/config_commands.h"
#include "qvrcli/config/parameter_commands.h"
#include "qvrcli/counters/gfast_counter_commands.h"
#include "qvrcli/counters/performance_commands.h"
#include "qvrcli/device/device_commands.h"
#include "qvrcli/device/firmware_commands.h"
#include "qvrcli/device/memory_commands.h"
#include "qvrcli/diagnostics/analyze_command.h"
#include "qvrcli/diagnostics/extcom_commands.h"
#include "qvrcli/diagnostics/logging_commands.h"
#include "qvrcli/diagnostics/signal_commands.h"
#include "qvrcli/diagnostics/system_commands.h"
#include "qvrcli/line/inventory_commands.h"
#include "qvrcli/line/line_control_commands.h"
#include "qvrcli/line/line_status_commands.h"
#include "qvrcli/line/network_info_command.h"
#include "qvrcli/session/session_commands.h"
#include "qvrcli/tones/etr_command.h"
#include "qvrcli/tones/phy_commands.h"
#include "qvrcli/tones/tone_commands.h"
#include "qvrcli/tones/vectoring_commands.h"
#include "qvrcli/vocabulary/join_commands.h"

namespace gfast::console {

namespace {

// clang-format off

// The whole vocabulary in the order in which it is registered, and in which help lists it. A word that others
// begin with only leads to them.
constexpr const char* kExecWords[] = {
    "read", "read memory", "read sbr",
    "write", "write memory",
    "show", "show gfast-counters", "show network-info", "show device-info", "show inventory",
    "show remote-management-counters", "show pmd-test-parameters", "show ETR", "show dictionary",
    "show params", "show BITSps", "show BITS-RMCps", "show SNRps", "show ALNps", "show HLOGps", "show SATN",
    "show init-failure-cause", "show pm-counters", "show 15min-counters", "show 24hr-counters",
    "show version", "show afe-params", "show log-level", "show extcom-results",
    "show vectoring", "show vectoring canceler", "show vectoring precoder",
    "show phy", "show phy info", "show phy params",
    "show line", "show line state", "show line performance-counters", "show line status",
    "show line config",
    "show system", "show system restart-state",
    "show channel", "show channel status", "show channel performance-counters",
    "show number", "show number 15min-intervals", "show number 24hr-intervals", "show number devices",
    "show number lines", "show number reboots",
    "set", "set log-level", "set inventory",
    "dump", "dump 15min-history",
    "restart", "restart line", "restart system",
    "activate", "activate line",
    "deactivate", "deactivate line",
    "start", "start logging", "start extcom-test",
    "stop", "stop logging",
};

constexpr const char* kConfigurationWords[] = {
    "TARSNRM", "Mds", "CE", "FEXT_CANCEL_ENABLE", "SRA_ENABLE", "CARMASK", "PSDMASK", "RFIBAND", "IARBANDS",
    "UPBOPSDA", "UPBOPSDB", "UPBOKL", "UPBOKLF", "UPBOKLREF", "MAXNDR", "INPMIN_SHINE", "INPMIN_REIN",
    "IAT_REIN", "SHINERATIO", "RTX_TESTMODE", "BLUPPERLIMIT", "DELAYMAX", "MAXSNRM", "MINSNRM", "SRA_USNRM",
    "SRA_UTIME", "SRA_DSNRM", "SRA_DTIME", "FRA_TIME", "FRA_NTONES", "FRA_RTXUC", "FRA_VENDISC",
    "REINIT_TIME_THRESHOLD", "LOS_PERSISTENCY", "LOM_PERSISTENCY", "LOR_PERSISTENCY", "LOW_ETR_THRESHOLD",
    "MINETR", "MAXATP", "RNRATIO", "TPS_TESTMODE", "DRA_TESTMODE", "ACEMODE", "ACEP2N2", "ALLOWACEON",
    "DTA_MODE", "MINMds", "MAXMds", "cDTA_MAXMds", "cDTA_MINMds", "cDTA_ENABLE", "TARSNRM_RMC",
    "MINSNRM_RMC", "MAXBL_RMC", "restore", "save", "show", "get",
};

constexpr const char* kMoreExecWords[] = {
    "rediscover",
    "reboot",
    "sleep",
    "load", "load bootloader",
    "upgrade", "upgrade bootloader", "upgrade manufacturer-block", "upgrade firmware",
    "erase", "erase bootloader", "erase manufacturer-block", "erase firmware", "erase flash",
    "run",
    "test", "test afe-loop", "test afe-mtpr", "test afe-mtpr-loop",
    "transmit", "transmit signal",
    "receive", "receive signal",
    "generate", "generate signal",
    "analyze", "analyze crashdump",
};

// clang-format on

constexpr auto kOrder = [] {
  std::array<Place, std::size(kExecWords) + std::size(kConfigurationWords) + std::size(kMoreExecWords)>
      order{};
  auto next = order.begin();
  for (const char* const path : kExecWords) {
    *next++ = {MODE_EXEC, path};
  }
  for (const char* const path : kConfigurationWords) {
    *next++ = {MODE_CONFIG, path};
  }
  for (const char* const path : kMoreExecWords) {
    *next++ = {MODE_EXEC, path};
  }
  return order;
}();

constexpr std::span<const Command> (*kFamilies[])() = {
    memoryCommands,       deviceCommands,    firmwareCommands, lineControlCommands, lineStatusCommands,
    networkInfoCommands,  inventoryCommands, configCommands,   parameterCommands,   performanceCommands,
    gfastCounterCommands, toneCommands,      phyCommands,      vectoringCommands,   etrCommands,
    signalCommands,       analyzeCommands,   extcomCommands,   loggingCommands,     systemCommands,
    sessionCommands,
};

std::vector<Command> rowsOfAllFamilies() {
  std::vector<Command> rows;
  for (const auto family : kFamilies) {
    rows.insert(rows.end(), family().begin(), family().end());
  }
  return rows;
}

}  // namespace

std::span<const Command> commandTable() {
  static const std::vector<Command> table = joinCommands(kOrder, rowsOfAllFamilies());
  return table;
}

}  // namespace gfast::console
