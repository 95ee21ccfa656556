#include "qvrcli/line/line_status_commands.h"

#include <algorithm>
#include <cstring>

#include "qvrcli/config/config_text.h"
#include "qvrcli/events/events.h"
#include "qvrcli/text/arguments.h"
#include "qvrcli/text/line_argument.h"
#include "qvrcli/text/line_buffer.h"
#include "qvrcli/text/link_states.h"

namespace gfast::console {

namespace {

constexpr int kNotRead = 1;
constexpr size_t kStatusLabelWidth = 20;
constexpr size_t kChannelLabelWidth = 15;

static_assert(QVR_K_MAX_LINES_PER_DEVICE == 1);
constexpr size_t kTheLine = 0;  // a device carries one

// A label, blanks up to a common column, the value.
template <size_t Width>
class Labelled {
 public:
  explicit Labelled(cli_def* cli) : cli_(cli) {}

  void number(const char* label, int value) const {
    cli_print(cli_, "%s %s %d", label, blanks(label), value);
  }
  void unsignedNumber(const char* label, uint32_t value) const {
    cli_print(cli_, "%s %s %u", label, blanks(label), value);
  }
  void text(const char* label, const char* value) const {
    cli_print(cli_, "%s %s %s", label, blanks(label), value);
  }

 private:
  static const char* blanks(const char* label) {
    return filler(' ', static_cast<uint8_t>(Width - std::strlen(label)));
  }

  cli_def* cli_;
};

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
  const Labelled<kStatusLabelWidth> show(cli);
  show.number("INITSFCAUSE", static_cast<int>(status.INITSFCAUSE));
  show.number("INITLASTSIGNALds", status.INITLASTSIGNALds);
  show.number("INITLASTSIGNALus", status.INITLASTSIGNALus);
  show.text("LINK_STATE", status.LINK_STATE == G9972_LINK_STATE_L3 ? "L3" : "L0N");
  show.number("SNRMds", status.SNRMds);
  show.number("SNRMus", status.SNRMus);
  show.number("UPBOKLE", status.UPBOKLE);
  show.number("UPBOKLE-R", status.UPBOKLE_R);
  show.number("ACTATPds", status.ACTATPds);
  show.number("ACTATPus", status.ACTATPus);
  show.number("SNRM_RMCds", status.SNRM_RMCds);
  show.number("SNRM_RMCus", status.SNRM_RMCus);
  for (int copy = 0; copy < 2; copy++) {  // scripts count on both
    show.number("EWL", static_cast<int>(status.EWL));
  }
  show.number("DTAMds", status.DTAMds);
  show.number("DTAMdsEVTCNT", static_cast<int>(status.DTAMdsEVTCNT));
}

void printChannel(cli_def* cli, const QVR_channelStatus_t& status) {
  const Labelled<kChannelLabelWidth> show(cli);
  show.unsignedNumber("NDR", status.NDR);
  show.unsignedNumber("ETR", status.ETR);
  show.unsignedNumber("GDR", status.GDR);
  show.unsignedNumber("ATTNDR", status.ATTNDR);
  show.unsignedNumber("DTU_NFEC", status.DTU_NFEC);
  show.unsignedNumber("DTU_RFEC", status.DTU_RFEC);
  show.unsignedNumber("DTU_Q", status.DTU_Q);
}

}  // namespace

QVR_lineId_t numberOfLinesFound() {
  // A device lost and found again counts once more.
  return static_cast<QVR_lineId_t>(
      std::min<uint32_t>(QVR_numberOfDevices() * QVR_numberOfLinesInDevice(), QVR_K_MAX_LINES));
}

int CLI_showLineState(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  QVR_lineId_t first = 0;
  if (!takeLine(cli, argv, argc, &first)) {
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
  QVR_lineId_t line = 0;
  if (!takeLine(cli, argv, argc, &line)) {
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

int CLI_showLineConfig(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  QVR_lineId_t line = 0;
  if (!takeLine(cli, argv, argc, &line)) {
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
  QVR_lineId_t line = 0;
  if (!takeLine(cli, argv, argc, &line)) {
    return CLI_OK;
  }
  const bool downstream = argc > 1 && isKeyword(argv[1], "ds");
  if (argc > 1 && !downstream && !isKeyword(argv[1], "us")) {
    cli_print(cli, "show channel-status [<line-id>] [(us | ds)]");
    return CLI_OK;
  }
  QVR_channelStatus_t status{};
  const QVR_retval_t result =
      downstream ? QVR_getChannelStatusds(line, &status) : QVR_getChannelStatusus(line, &status);
  if (QVR_STATUS_ERROR(result)) {
    cli_print(cli, "QVR_getChannelStatus failed");
    return CLI_OK;
  }
  printChannel(cli, status);
  return CLI_OK;
}

int CLI_showInitFailureCause(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  QVR_lineId_t line = 0;
  if (!takeLine(cli, argv, argc, &line)) {
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

}  // namespace gfast::console
