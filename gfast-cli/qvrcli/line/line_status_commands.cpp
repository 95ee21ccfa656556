#include "qvrcli/line/line_status_commands.h"

#include <algorithm>

#include "qvrcli/config/config_text.h"
#include "qvrcli/events/events.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/labelled_lines.h"
#include "qvrcli/text/link_states.h"

namespace gfast::console {

namespace {

constexpr int kNotRead = 1;
constexpr uint8_t kStatusLabelWidth = 20;
constexpr uint8_t kChannelLabelWidth = 15;

static_assert(QVR_K_MAX_LINES_PER_DEVICE == 1);

// CLI_ERROR when the line has no device, or when its device does not answer.
int printLineState(cli_def* cli, QVR_lineId_t line) {
  const QVR_deviceId_t device = QVR_deviceIdforLine(line);
  if (device == QVR_K_DEVICE_NULL) {
    return CLI_ERROR;
  }
  QVR_deviceInfo_t info;
  if (QVR_STATUS_ERROR(QVR_getDeviceInfo(device, &info))) {
    cli_print(cli, "Could not refresh the data");
    return CLI_ERROR;
  }
  cli_print(cli, "Line[%02d] %s", line, linkStateString(static_cast<int>(info.lineState[kTheLine])));
  return CLI_OK;
}

void printStatus(cli_def* cli, const QVR_lineStatus_t& status) {
  const LabelledLines lines(cli, kStatusLabelWidth);
  lines.print("INITSFCAUSE", static_cast<int>(status.INITSFCAUSE));
  lines.print("INITLASTSIGNALds", status.INITLASTSIGNALds);
  lines.print("INITLASTSIGNALus", status.INITLASTSIGNALus);
  lines.print("LINK_STATE", status.LINK_STATE == G9972_LINK_STATE_L3 ? "L3" : "L0N");
  lines.print("SNRMds", status.SNRMds);
  lines.print("SNRMus", status.SNRMus);
  lines.print("UPBOKLE", status.UPBOKLE);
  lines.print("UPBOKLE-R", status.UPBOKLE_R);
  lines.print("ACTATPds", status.ACTATPds);
  lines.print("ACTATPus", status.ACTATPus);
  lines.print("SNRM_RMCds", status.SNRM_RMCds);
  lines.print("SNRM_RMCus", status.SNRM_RMCus);
  for (int copy = 0; copy < 2; copy++) {  // scripts count on both
    lines.print("EWL", static_cast<int>(status.EWL));
  }
  lines.print("DTAMds", status.DTAMds);
  lines.print("DTAMdsEVTCNT", static_cast<int>(status.DTAMdsEVTCNT));
}

void printChannel(cli_def* cli, const QVR_channelStatus_t& status) {
  const LabelledLines lines(cli, kChannelLabelWidth);
  lines.print("NDR", status.NDR);
  lines.print("ETR", status.ETR);
  lines.print("GDR", status.GDR);
  lines.print("ATTNDR", status.ATTNDR);
  lines.print("DTU_NFEC", status.DTU_NFEC);
  lines.print("DTU_RFEC", status.DTU_RFEC);
  lines.print("DTU_Q", status.DTU_Q);
}

int CLI_showLineState(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t first = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  const QVR_lineId_t end = argc > 0 ? first + 1 : numberOfLinesFound();
  int result = CLI_OK;
  for (QVR_lineId_t line = first; line < end && result == CLI_OK; line++) {
    result = printLineState(cli, line);
  }
  return result;
}

int CLI_showLineStatus(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_lineStatus_t status{};
  const QVR_retval_t result = QVR_getLineStatus(line, &status);
  if (QVR_STATUS_ERROR(result)) {
    cli_print(cli, "Failed getting line status (%d)", static_cast<int>(result));
    return CLI_OK;
  }
  printStatus(cli, status);
  return CLI_OK;
}

// Returns 1 to libcli when the configuration could not be read.
int CLI_showLineConfig(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_lineConfig_t config{};
  if (QVR_STATUS_ERROR(QVR_getLineConfig(line, &config))) {
    cli_print(cli, "QVR_getLineConfig failed");
    return kNotRead;
  }
  printConfigParams(cli, line, config);
  return CLI_OK;
}

int CLI_showChannelStatus(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  const Direction direction = words.direction(1, "show channel-status [<line-id>] [(us | ds)]");
  if (words.refused()) {
    return CLI_OK;
  }
  const auto read = direction == Direction::kDownstream ? QVR_getChannelStatusds : QVR_getChannelStatusus;
  QVR_channelStatus_t status{};
  if (QVR_STATUS_ERROR(read(line, &status))) {
    cli_print(cli, "QVR_getChannelStatus failed");
    return CLI_OK;
  }
  printChannel(cli, status);
  return CLI_OK;
}

int CLI_showInitFailureCause(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  G9972_initSuccessFailureCause_t cause = 0;
  G9972_initLastSignal_t lastSignalDs = 0;
  G9972_initLastSignal_t lastSignalUs = 0;
  if (QVR_STATUS_ERROR(QVR_getLineStatusInitialization(line, &cause, &lastSignalDs, &lastSignalUs))) {
    cli_print(cli, "Failed getting information from device");
    return CLI_OK;
  }
  cli_print(cli, "INITSFCAUSE = %1d", static_cast<int>(cause));
  cli_print(cli, "INITLASTSIGNALds = %1d", lastSignalDs);
  cli_print(cli, "INITLASTSIGNALus = %1d", lastSignalUs);
  return CLI_OK;
}

int CLI_showNumberOfDevices(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_print(cli, "%1d", static_cast<int>(QVR_numberOfDevices()));
  return CLI_OK;
}

int CLI_showNumberOfLines(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  const auto linesPerDevice = static_cast<int>(QVR_numberOfLinesInDevice());
  cli_print(cli, "lines per device = %1d, total = %1d ", linesPerDevice,
            static_cast<int>(QVR_numberOfDevices()) * linesPerDevice);
  return CLI_OK;
}

int CLI_showNumberOfReboots(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_print(cli, "%d", rebootCount());
  return CLI_OK;
}

constexpr Command kLineStatusCommands[] = {
    exec("show init-failure-cause", "Show initialization failure causes", CLI_showInitFailureCause,
         between<0, 1>, kReads, "show init-failure-cause [<lineId>]"),
    exec("show line state", "Show line state", CLI_showLineState, between<0, 1>, kReads,
         "show line state [<lineId>] : { * all lines }"),
    exec("show line status", "Show line status information", CLI_showLineStatus, between<0, 1>, kReads,
         "show line status [<lineId>] : { 0 }"),
    exec("show line config", "Show line confgetiguration", CLI_showLineConfig, between<0, 1>, kReads,
         "show line config [<line-id>] : { 0 }"),
    exec("show channel status", "Show channel status for line in US or DS direction", CLI_showChannelStatus,
         between<0, 2>, kReads, "show channel status [<line-id>] [us | ds] : { 0, us }"),
    exec("show number devices", "Show number of discovered G.fast devices", CLI_showNumberOfDevices,
         exactly<0>, kReads, "show number devices"),
    exec("show number lines", "Show number of G.fast lines", CLI_showNumberOfLines, exactly<0>, kReads,
         "show number lines"),
    exec("show number reboots", "Show number of reboot notifications", CLI_showNumberOfReboots, exactly<0>,
         kReads, "show number reboots"),
};

}  // namespace

std::span<const Command> lineStatusCommands() {
  return kLineStatusCommands;
}

QVR_lineId_t numberOfLinesFound() {
  // The library counts a device once more when it is lost and found again.
  return static_cast<QVR_lineId_t>(
      std::min<uint32_t>(QVR_numberOfDevices() * QVR_numberOfLinesInDevice(), QVR_K_MAX_LINES));
}

}  // namespace gfast::console
