// The vocabulary itself. Texts are part of the product, misspellings and trailing blanks included: operators'
// scripts look for them.
#include <iterator>
#include <vector>

#include "qvrcli/config/config_commands.h"
#include "qvrcli/config/parameter_commands.h"
#include "qvrcli/counters/gfast_counter_commands.h"
#include "qvrcli/counters/performance_commands.h"
#include "qvrcli/device/device_commands.h"
#include "qvrcli/diagnostics/crash_dump.h"
#include "qvrcli/diagnostics/diagnostics_commands.h"
#include "qvrcli/diagnostics/signal_commands.h"
#include "qvrcli/line/line_status_commands.h"
#include "qvrcli/line/network_info.h"
#include "qvrcli/line/show_inventory.h"
#include "qvrcli/session/scripts.h"
#include "qvrcli/tones/etr_command.h"
#include "qvrcli/tones/phy_commands.h"
#include "qvrcli/tones/tone_commands.h"
#include "qvrcli/tones/vectoring_commands.h"
#include "qvrcli/vocabulary/command_tree.h"

namespace gfast::console {

namespace {

constexpr bool anyNumberButFour(int argc) {
  return argc != 4;
}

constexpr Command kCommands[] = {
    keyword("read"),
    exec("read memory", "Read memory from device", CLI_readMemory, between<3, 4>,
         "read memory <device-id | line-id> <address> <length> [(ne | fe)]"),
    exec("read sbr", "Read software boot register (SBR)", CLI_readSBR, between<0, 1>,
         "read sbr <device-id> [ 0 ]"),
    keyword("write"),
    exec("write memory", "Write to device memory", CLI_writeMemory, atLeast<4>,
         "write memory <device-id> <address> <length> <data> : data either at xx:xx:xx... or hex value"),
    keyword("show"),
    exec("show gfast-counters", "Show G.fast counters for line", CLI_showGfastCounters, between<1, 2>,
         "show gfast-counters <line-id> [(ne | fe)]"),
    exec("show network-info", "Show network information", CLI_showNetworkInfo, exactly<0>,
         "show network-info"),
    exec("show device-info", "Show device information", CLI_showDeviceInfo, between<0, 1>,
         "show device-info [<device-id>]"),
    exec("show inventory", "Show inventory information for line", CLI_showInventory, between<0, 1>,
         "show inventory [<line-id>] : { 0 }"),
    exec("show remote-management-counters", "Show remote FTU management counters for line",
         CLI_showRemoteManagementCounters, between<0, 1>,
         "show remote-management-counters [<line-id>] : { 0 }"),
    exec("show pmd-test-parameters", "Show PMD test parameters for line", CLI_showPMDTestParameters,
         between<0, 1>, "show pmd-test-parameters [<line-id>] : { 0 }"),
    exec("show ETR", "Show Expected ThRoughput (ETR) for line", CLI_showLineETR, exactly<1>,
         "show ETR <lineId>"),
    exec("show dictionary", "Show parameter dictionary", CLI_showDictionary, exactly<0>, "show dictionary"),
    exec("show params", "Show device parameter values", CLI_showParams, between<0, 1>,
         "show params [<lineId>]"),
    exec("show BITSps", "Show bit-loading per sub-carrier", CLI_showBITSps, between<0, 3>,
         "show BITSps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"),
    exec("show BITS-RMCps", "Show bit-loading per sub-carrier for RMC symbol", CLI_showBITSRMCps,
         between<0, 3>, "show BITS-RMCps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"),
    exec("show SNRps", "Show SNR per sub-carrier", CLI_showSNRps, between<0, 3>,
         "show SNRps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"),
    exec("show ALNps", "Show ALN per sub-carrier", CLI_showALNps, between<0, 3>,
         "show ALNps [<lineId>] [ds | us] [<filename>]: { 0, us, <NONE> }"),
    exec("show HLOGps", "Show HLOG per sub-carrier", CLI_showHLOGps, between<0, 3>,
         "show HLOGps [<lineId>] [ds | us] [<filename>]"),
    exec("show SATN", "Show Signal Attenuation (SATN)", CLI_showSATN, between<0, 2>,
         "show SATN [<lineId>] [ds | us]"),
    exec("show init-failure-cause", "Show initialization failure causes", CLI_showInitFailureCause,
         between<0, 1>, "show init-failure-cause [<lineId>]"),
    exec("show pm-counters", "Show performance monitoring counters for line",
         CLI_showPerformanceMonitoringCounters, exactly<1>, "show pm-counters <line-id>"),
    exec("show 15min-counters", "Show 15-minute performance counters", CLI_show15minCounters, between<0, 2>,
         "show 15min-counters [<line-id>] [interval]"),
    exec("show 24hr-counters", "Show 24-hour performance counters", CLI_show24hrCounters, between<0, 2>,
         "show 24hr-counters [<line-id>] [interval]"),
    exec("show version", "Shows SDK version identifier", CLI_showVersion, anyNumber, "show version"),
    exec("show afe-params", "Show AFE parameters for a line or all lines", CLI_showAfeParams, between<0, 2>,
         "show afe-params [<lineId>] [ne | fe] : { <ALL> ne  }"),
    exec("show log-level", "Show current log level", CLI_showLogLevel, exactly<0>, "show log-level"),
    exec("show extcom-results", "Shows Extcom test results", CLI_showExtcomTestResults, between<0, 1>,
         "start extcom-text"),
    keyword("show vectoring"),
    exec("show vectoring canceler", "Show vectoring canceler matrix for a line", CLI_showCancelerMatrix,
         exactly<2>, "show vectoring canceler <line-id> <filename>"),
    exec("show vectoring precoder", "Show vectoring precoder matrix for a line", CLI_showPrecoderMatrix,
         exactly<2>, "show vectoring precoder <line-id> <filename>"),
    keyword("show phy"),
    exec("show phy info", "Show PHY-level information for line", CLI_showPhyInfo, between<0, 3>,
         "show phy info [<line-id>] [(ne | fe)] [<filename>] : { 0, us <NONE> }"),
    exec("show phy params", "Show PHY parameters for line", CLI_showPhyParams, between<0, 1>,
         "show phy params [<line-id>] : { 0 }"),
    keyword("show line"),
    exec("show line state", "Show line state", CLI_showLineState, between<0, 1>,
         "show line state [<lineId>] : { * all lines }"),
    exec("show line performance-counters", "Show (near-end) line performance counters",
         CLI_showLinePerformanceCounters, between<0, 2>,
         "show line performance-counters [<line-id>] [(ne | fe)] : { 0, ne }"),
    exec("show line status", "Show line status information", CLI_showLineStatus, between<0, 1>,
         "show line status [<lineId>] : { 0 }"),
    exec("show line config", "Show line confgetiguration", CLI_showLineConfig, between<0, 1>,
         "show line config [<line-id>] : { 0 }"),
    keyword("show system"),
    exec("show system restart-state", "Show system restart state", CLI_showSystemRestartState, exactly<0>,
         "show system restart-state"),
    keyword("show channel"),
    exec("show channel status", "Show channel status for line in US or DS direction", CLI_showChannelStatus,
         between<0, 2>, "show channel status [<line-id>] [us | ds] : { 0, us }"),
    exec("show channel performance-counters", "Show (near-end) line performance counters",
         CLI_showChannelPerformanceCounters, between<1, 2>,
         "show channel performance-counters <line-id> [(ne | fe)] : { 0, ne }"),
    keyword("show number"),
    exec("show number 15min-intervals", "Show number of 15 minute history intervals",
         CLI_showNumberOf15minIntervals, between<0, 1>, "show number 15min-intervals [<line-id>]"),
    exec("show number 24hr-intervals", "Show number of 24 hour history intervals",
         CLI_showNumberOf24hrIntervals, between<0, 1>, "show number 24hr-intervals [<line-id>]"),
    exec("show number devices", "Show number of discovered G.fast devices", CLI_showNumberOfDevices,
         exactly<0>, "show number devices"),
    exec("show number lines", "Show number of G.fast lines", CLI_showNumberOfLines, exactly<0>,
         "show number lines"),
    exec("show number reboots", "Show number of reboot notifications", CLI_showNumberOfReboots, exactly<0>,
         "show number reboots"),
    keyword("set"),
    exec("set log-level", "Set current log level", CLI_setLogLevel, exactly<1>,
         "set log-level <0..4> : 0=LOG_CRIT, 1=LOG_ERR, 2=LOG_WARNING, 3=LOG_INFO, 4=LOG_DEBUG"),
    exec("set inventory", "Set some inventory parameters", CLI_setInventory, anyNumberButFour,
         "set inventory <device-id> <vendor-id> <serial-number> : vendor-id (hex string) "
         "XX:XX:XX:XX:XX:XX:XX:XX, serial-number (string)"),
    keyword("dump"),
    exec("dump 15min-history", "Dump the 15-minute counter history database", CLI_dump15minCountersHistoryDB,
         between<0, 1>, "dump 15min-history [<line-id>] : { 0 }"),
    keyword("restart"),
    exec("restart line", "Restart a G.fast line or all active lines", CLI_resetLine, exactly<1>,
         "restart line <line-id> | all"),
    exec("restart system", "Restart the system", CLI_restartSystem, between<0, 2>,
         "restart system [<wait-for-config>] [device-id] : { 0, F }"),
    keyword("activate"),
    exec("activate line", "Activate a line", CLI_activateLine, exactly<1>,
         "activate line [<line-id> | all] : { 0 }"),
    keyword("deactivate"),
    exec("deactivate line", "De-activate a line", CLI_deactivateLine, between<0, 1>,
         "deactivate line [<line-id> | all] : { 0 }"),
    keyword("start"),
    exec("start logging", "Starts terminal logging", CLI_startLogging, between<0, 1>,
         "start logging [<seconds>] [<filename>] : { <0>, <stdout> }"),
    exec("start extcom-test", "Starts Extcom PRBS test", CLI_startExtcomTest, between<0, 1>,
         "start extcom-text"),
    keyword("stop"),
    exec("stop logging", "Stops terminal logging", CLI_stopLogging, between<0, 1>, "stop logging "),
};

constexpr Command kCommandsBehindConfig[] = {
    exec("rediscover", "Rediscover G.fast devices", CLI_rediscoverDevices, exactly<0>, "rediscover"),
    exec("reboot", "Reboot device", CLI_rebootDevice, between<0, 2>,
         "reboot [B0 | B1 | APP] [<device-id>] : { APP, 0 }"),
    exec("sleep", "Sleep for some seconds", CLI_sleep, exactly<1>, "sleep <seconds>"),
    keyword("load"),
    exec("load bootloader", "Erase bootloader from flash", CLI_loadBootloader, between<0, 2>,
         "load bootloader [<filename>] [<device-id>] : { B1.bin, 0 }"),
    keyword("upgrade"),
    exec("upgrade bootloader", "Upgrade bootloader", CLI_upgradeBootloader, between<0, 2>,
         "upgrade-bootloader [<filename>] [<device-id>] : { B1.bin 0 } "),
    exec("upgrade manufacturer-block", "Upgrade manufacturer block", CLI_upgradeManufacturerBlock,
         between<0, 2>,
         "upgrade manufacturer-block [<filename>] [<device-id>] : { ManufacturerBlock_DP.bin, 0 }"),
    exec("upgrade firmware", "Upgrade firmware image", CLI_upgradeFirmwareImage, between<0, 2>,
         "upgrade firmware-image [<filename>] [<device-id>] : { triplet_dp_2_94.bin, 0 }"),
    keyword("erase"),
    exec("erase bootloader", "Erase bootloader from flash", CLI_eraseBootloader, between<0, 1>,
         "erase bootloader [<device-id>] : { 0 }"),
    exec("erase manufacturer-block", "Erase manufacturer block from flash", CLI_eraseManufacturerBlock,
         between<0, 1>, "erase manufacturer-block [<device-id>] : { 0 }"),
    exec("erase firmware", "Erase firmware image from flash", CLI_eraseFirmwareImage, between<0, 1>,
         "erase firmware [<device-id>] : { 0 }"),
    exec("erase flash", "Erase entire flash", CLI_eraseFlash, between<0, 1>,
         "erase flash [<device-id>] : { 0 }"),
    exec("run", "Run a CLI script file", CLI_runScript, between<0, 2>,
         "run [<filename>] [<iterations>]: { clitest.txt }"),
    keyword("test"),
    exec("test afe-loop", "Test AFE Tx-Rx path", CLI_testAfeTxRxPath, between<2, 4>,
         "test afe-loop <tx-line-id> <rx-line-id> [<txsignal-filename>] [<fdsignal-filename>] : { "
         "<default-signal>, fdsignal.out } "),
    exec("test afe-mtpr", "Test MTPR performance", CLI_testAfePerformanceMTPR, between<2, 5>,
         "test afe-mtpr <tx-line-id> <rx-line-id> [<txsignal-filename>] [<fdsignal-filename>] "
         "[<mtpr-result-filename>] : { NULL, fdsignal.out mtpr.out } "),
    exec("test afe-mtpr-loop", "Test MTPR performance in loop", CLI_testAfePerformanceMTPRInLoop,
         between<2, 4>,
         "test afe-mtpr-loop <tx-line-id> <rx-line-id> <loop-iterations> [<mtpr-result-filename>] : { 1, "
         "mtpr.out } "),
    keyword("transmit"),
    exec("transmit signal", "Transmit signal", CLI_transmitSignal, between<0, 2>,
         "transmit signal [<line-id>] [<signal-filename>] : { 0, <default-signal> }"),
    keyword("receive"),
    exec("receive signal", "Receive signal snapshot", CLI_receiveSignal, between<0, 2>,
         "receive signal [<line-id>] [<fdsignal-filename>] : { 0, fdsignal.out } "),
    keyword("generate"),
    exec("generate signal", "Generate a random signal", CLI_generateRandomSignal, between<0, 1>,
         "generate signal [<signal-filename>] : { txsignal.dat }"),
    keyword("analyze"),
    exec("analyze crashdump", "Analyze crash dump file", CLI_analyzeCrashDump, between<1, 3>,
         "analyze crashdump <number-of-addresses-per-line> <crashdump-filename> [<output-file>]"),
};

}  // namespace

std::span<const Command> commandTable() {
  static const std::vector<Command> table = [] {
    std::vector<Command> rows(std::begin(kCommands), std::end(kCommands));
    const std::span<const Command> config = configCommands();
    rows.insert(rows.end(), config.begin(), config.end());
    rows.insert(rows.end(), std::begin(kCommandsBehindConfig), std::end(kCommandsBehindConfig));
    return rows;
  }();
  return table;
}

}  // namespace gfast::console
