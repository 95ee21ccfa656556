#include <cerrno>
#include <cstring>

#include "qvrcli/device/device_commands.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/arguments.h"

namespace gfast::console {

namespace {

// The arguments that all of these commands take: a file name, a device, both with defaults.
struct Arguments {
  const char* filename;
  int deviceId = 0;
};

bool parseDevice(cli_def* cli, const char* word, int* deviceId) {
  if (isValidDeviceId(word, deviceId)) {
    return true;
  }
  cli_print(cli, "invalid device number %s", word);
  return false;
}

bool parseArguments(cli_def* cli, char* argv[], int argc, Arguments* arguments) {
  if (argc > 0) {
    arguments->filename = argv[0];
  }
  return argc < 2 || parseDevice(cli, argv[1], &arguments->deviceId);
}

// The driver's record holds a name and its terminator, or it is no name.
bool fitsRecord(const char* filename) {
  return std::strlen(filename) < MAX_FW_FN_SIZE;
}

int report(cli_def* cli, QVR_retval_t status, const char* failure) {
  if (status == QVR_E_INVALID_FW_STATE) {
    cli_print(cli, "Invalid FW state - must be in B1 bootloader state");
  } else if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "%s", failure);
  }
  return CLI_OK;
}

// A name the driver cannot take fails before the flash is erased for it.
int upgrade(cli_def* cli, char* argv[], int argc, const char* defaultFile,
            QVR_retval_t (*operation)(QVR_deviceId_t, const char*), const char* failure) {
  Arguments arguments{defaultFile};
  if (!parseArguments(cli, argv, argc, &arguments)) {
    return CLI_OK;
  }
  flushSession(cli);
  const QVR_retval_t status = fitsRecord(arguments.filename)
                                  ? operation(arguments.deviceId, arguments.filename)
                                  : QVR_E_FAILED_TO_OPEN_IMAGE_FILE;
  return report(cli, status, failure);
}

int erase(cli_def* cli, char* argv[], int argc, QVR_retval_t (*operation)(QVR_deviceId_t),
          const char* failure) {
  int deviceId = 0;
  if (argc > 0 && !parseDevice(cli, argv[0], &deviceId)) {
    return CLI_OK;
  }
  flushSession(cli);
  return report(cli, operation(deviceId), failure);
}

}  // namespace

int CLI_loadBootloader(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  Arguments arguments{"B1.bin"};
  if (!parseArguments(cli, argv, argc, &arguments)) {
    return CLI_OK;
  }
  QVR_deviceInfo_t info;
  if (QVR_STATUS_ERROR(QVR_getDeviceInfo(arguments.deviceId, &info))) {
    cli_print(cli, "Could not refresh the data");
    return CLI_OK;
  }
  if (info.fwState != FW_B0) {
    cli_print(cli, "Device must be in B0 state");
    return CLI_OK;
  }
  flushSession(cli);
  if (!fitsRecord(arguments.filename)) {
    cli_print(cli, "Error loading image - %s", std::strerror(ENAMETOOLONG));
  } else if (QVR_STATUS_ERROR(QVR_loadBootloader(arguments.deviceId, arguments.filename))) {
    cli_print(cli, "Error loading image - %s", std::strerror(errno));
  }
  return CLI_OK;
}

int CLI_upgradeBootloader(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return upgrade(cli, argv, argc, "B1.bin", QVR_upgradeBootloader, "failed upgrading bootloader");
}

int CLI_upgradeManufacturerBlock(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return upgrade(cli, argv, argc, "ManufacturerBlock_DP.bin", QVR_upgradeManufactureBlock,
                 "failed upgrading manufacturer block");
}

int CLI_upgradeFirmwareImage(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return upgrade(cli, argv, argc, "triplet_dp_2_94.bin", QVR_upgradeAppFirmware,
                 "failed upgrading firmware image");
}

int CLI_eraseBootloader(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return erase(cli, argv, argc, QVR_eraseBootloader, "failed erasing bootloader");
}

int CLI_eraseManufacturerBlock(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return erase(cli, argv, argc, QVR_eraseManufacturerBlock, "failed erasing manufacturer block");
}

int CLI_eraseFirmwareImage(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return erase(cli, argv, argc, QVR_eraseAppFirmware, "failed erasing firmware image");
}

int CLI_eraseFlash(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return erase(cli, argv, argc, QVR_eraseFlash, "Failed erasing flash");
}

}  // namespace gfast::console
