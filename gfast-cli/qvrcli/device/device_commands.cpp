#include "qvrcli/device/device_commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "qvrcli/config/config_commands.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/arguments.h"
#include "qvrcli/text/hexadecimal.h"
#include "qvrcli/text/line_buffer.h"
#include "qvrcli/text/link_states.h"
#include "qvrcli/text/printable.h"

namespace gfast::console {

namespace {

const char* fwStateName(QVR_fwState_t state) {
  switch (state) {
    case FW_B0:
      return " BO";  // a letter O: scripts look for it
    case FW_B1:
      return " B1";
    case FW_APP:
      return "APP";
    default:
      return "UNDEFINED";
  }
}

void printLineRow(cli_def* cli, const QVR_deviceInfo_t& info, int line) {
  AddMessage(std::to_string(info.lineIDs[line]).c_str(), 0);
  AddMessage(linkStateString(static_cast<int>(info.lineState[line])), 16);
  if (info.lineState[line] == LS_SELFTEST) {
    AddMessage("N/A", 32);
  } else {
    AddMessage(fmt::format("{:.3f} seconds", info.lineStartupTime[line] / 1000.0).c_str(), 32);
  }
  PrintMessage(cli);
}

void printDevice(cli_def* cli, const QVR_deviceInfo_t& info) {
  const uint8_t* mac = info.mainDFEMacAddress;
  const QVR_versionNumber_t& version = info.firmwareVersion;
  char vendorId[3 * sizeof info.vendorId + 1];
  toHexString(reinterpret_cast<const uint8_t*>(info.vendorId), sizeof info.vendorId, vendorId);

  cli_print(cli, "MAC address                 %02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3],
            mac[4], mac[5]);
  cli_print(cli, "Device Info Version                      %04u", info.devInfVersion);
  cli_print(cli, "Firmware Version                    %01hhu.%01hhu.%01hhu.%01hhu", version.versionChipset,
            version.versionGa, version.versionRc, version.versionProfile);
  cli_print(cli, "Compiled at              %s %s", printable(info.date).c_str(),
            printable(info.time).c_str());
  cli_print(cli, "FW State                                  %s", fwStateName(info.fwState));
  cli_print(cli, "Config State                     %s",
            info.configState != CONFIG_STATE_SYSTEM ? "  LINE (LCS)" : "SYSTEM (SCS)");
  cli_print(cli, "Device temperature [Cel.]                %04u", info.temperatureInCelcius);
  cli_print(cli, "Vendor ID             %s", vendorId);
  cli_print(cli, "%s", "");
  AddMessage("Link ID", 0);
  AddMessage("Status", 16);
  AddMessage("Startup Time", 32);
  PrintMessage(cli);
  for (int line = 0; line < std::min<int>(info.numberOfLines, QVR_K_MAX_LINES_PER_DEVICE); line++) {
    printLineRow(cli, info, line);
  }
}

// The words of `reboot` and the stages they name.
constexpr struct {
  const char* word;
  QVR_fwState_t state;
} kBootStages[] = {{"b0", FW_B0}, {"b1", FW_B1}, {"app", FW_APP}};

QVR_fwState_t bootStage(const char* word) {
  for (const auto& stage : kBootStages) {
    if (isKeyword(word, stage.word)) {
      return stage.state;
    }
  }
  return FW_UNDEFINED;
}

// CLI_ERROR when the data could not be refreshed.
int CLI_showDeviceInfo(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_deviceId_t device = words.device(0, "invalid device number {}");
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_deviceInfo_t info;
  if (QVR_STATUS_ERROR(QVR_getDeviceInfo(device, &info))) {
    cli_print(cli, "Could not refresh the data");
    return CLI_ERROR;
  }
  printDevice(cli, info);
  return CLI_OK;
}

int CLI_rediscoverDevices(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  if (QVR_STATUS_ERROR(QVR_rediscoverDevices())) {
    cli_print(cli, "failed rediscovering devices");
  }
  return CLI_OK;
}

int CLI_rebootDevice(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const char* const stage = words.text(0, "app");
  const QVR_fwState_t state = bootStage(stage);
  if (state == FW_UNDEFINED) {
    cli_print(cli, "invalid state %s", stage);
    return CLI_OK;
  }
  const QVR_deviceId_t device = words.device(1, "invalid device number {}");
  if (words.refused()) {
    return CLI_OK;
  }
  if (QVR_STATUS_ERROR(QVR_rebootDevice(device, state))) {
    cli_print(cli, "failed resetting device");
  }
  return CLI_OK;
}

int CLI_restartSystem(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const BOOL waitForConfig = words.is(0, "t") ? TRUE : FALSE;
  const QVR_deviceId_t device = words.device(1, "invalid device number");
  if (words.refused()) {
    return CLI_OK;
  }
  flushSession(cli);
  QVR_restartDevice(device, waitForConfig);
  QVR_getLineConfig(0, &configParams);
  return CLI_OK;
}

constexpr Command kDeviceCommands[] = {
    exec("show device-info", "Show device information", CLI_showDeviceInfo, between<0, 1>, kReads,
         "show device-info [<device-id>]"),
    exec("restart system", "Restart the system", CLI_restartSystem, between<0, 2>, kChanges,
         "restart system [<wait-for-config>] [device-id] : { 0, F }"),
    exec("rediscover", "Rediscover G.fast devices", CLI_rediscoverDevices, exactly<0>, kChanges,
         "rediscover"),
    exec("reboot", "Reboot device", CLI_rebootDevice, between<0, 2>, kChanges,
         "reboot [B0 | B1 | APP] [<device-id>] : { APP, 0 }"),
};

}  // namespace

std::span<const Command> deviceCommands() {
  return kDeviceCommands;
}

}  // namespace gfast::console
