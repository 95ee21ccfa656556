#include "qvrcli/device/firmware_commands.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/named_files.h"

namespace gfast::console {

namespace {

constexpr Refusal kNoSuchDevice = "invalid device number {}";

// The name that the driver is given, for whose record it must leave room for a terminator. Empty, with errno,
// when the driver cannot or may not have it.
std::optional<std::string> nameForDriver(const char* filename) {
  std::optional<std::string> name = nameForOthers(filename);
  if (name && name->size() >= MAX_FW_FN_SIZE) {
    errno = ENAMETOOLONG;
    return std::nullopt;
  }
  return name;
}

int report(cli_def* cli, QVR_retval_t status, const char* failure) {
  if (status == QVR_E_INVALID_FW_STATE) {
    cli_print(cli, "Invalid FW state - must be in B1 bootloader state");
  } else if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "%s", failure);
  }
  return CLI_OK;
}

// A name that the driver cannot take is refused before the flash is erased.
int upgrade(cli_def* cli, char* argv[], int argc, const char* defaultFile,
            QVR_retval_t (*operation)(QVR_deviceId_t, const char*), const char* failure) {
  ArgumentReader words(cli, argv, argc);
  const char* const filename = words.text(0, defaultFile);
  const QVR_deviceId_t device = words.device(1, kNoSuchDevice);
  if (words.refused()) {
    return CLI_OK;
  }
  flushSession(cli);
  const auto name = nameForDriver(filename);
  const QVR_retval_t status = name ? operation(device, name->c_str()) : QVR_E_FAILED_TO_OPEN_IMAGE_FILE;
  return report(cli, status, failure);
}

int erase(cli_def* cli, char* argv[], int argc, QVR_retval_t (*operation)(QVR_deviceId_t),
          const char* failure) {
  ArgumentReader words(cli, argv, argc);
  const QVR_deviceId_t device = words.device(0, kNoSuchDevice);
  if (words.refused()) {
    return CLI_OK;
  }
  flushSession(cli);
  return report(cli, operation(device), failure);
}

int CLI_loadBootloader(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const char* const filename = words.text(0, "B1.bin");
  const QVR_deviceId_t device = words.device(1, kNoSuchDevice);
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_deviceInfo_t info;
  if (QVR_STATUS_ERROR(QVR_getDeviceInfo(device, &info))) {
    cli_print(cli, "Could not refresh the data");
    return CLI_OK;
  }
  if (info.fwState != FW_B0) {
    cli_print(cli, "Device must be in B0 state");
    return CLI_OK;
  }
  flushSession(cli);
  const auto name = nameForDriver(filename);
  if (!name || QVR_STATUS_ERROR(QVR_loadBootloader(device, name->c_str()))) {
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

constexpr Command kFirmwareCommands[] = {
    exec("load bootloader", "Erase bootloader from flash", CLI_loadBootloader, between<0, 2>, kChanges,
         "load bootloader [<filename>] [<device-id>] : { B1.bin, 0 }"),
    exec("upgrade bootloader", "Upgrade bootloader", CLI_upgradeBootloader, between<0, 2>, kChanges,
         "upgrade-bootloader [<filename>] [<device-id>] : { B1.bin 0 } "),
    exec("upgrade manufacturer-block", "Upgrade manufacturer block", CLI_upgradeManufacturerBlock,
         between<0, 2>, kChanges,
         "upgrade manufacturer-block [<filename>] [<device-id>] : { ManufacturerBlock_DP.bin, 0 }"),
    exec("upgrade firmware", "Upgrade firmware image", CLI_upgradeFirmwareImage, between<0, 2>, kChanges,
         "upgrade firmware-image [<filename>] [<device-id>] : { triplet_dp_2_94.bin, 0 }"),
    exec("erase bootloader", "Erase bootloader from flash", CLI_eraseBootloader, between<0, 1>, kChanges,
         "erase bootloader [<device-id>] : { 0 }"),
    exec("erase manufacturer-block", "Erase manufacturer block from flash", CLI_eraseManufacturerBlock,
         between<0, 1>, kChanges, "erase manufacturer-block [<device-id>] : { 0 }"),
    exec("erase firmware", "Erase firmware image from flash", CLI_eraseFirmwareImage, between<0, 1>, kChanges,
         "erase firmware [<device-id>] : { 0 }"),
    exec("erase flash", "Erase entire flash", CLI_eraseFlash, between<0, 1>, kChanges,
         "erase flash [<device-id>] : { 0 }"),
};

}  // namespace

std::span<const Command> firmwareCommands() {
  return kFirmwareCommands;
}

}  // namespace gfast::console
