#include "qvrcli/line/inventory_commands.h"

#include <qvr.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/hexadecimal.h"
#include "qvrcli/text/printable.h"

namespace gfast::console {

namespace {

// A text ends at its first zero byte or fills its field.
template <size_t Size>
std::string textOf(const char (&field)[Size]) {
  const std::string_view whole(field, Size);
  return printable(whole.substr(0, whole.find('\0')));
}

// A vendor id has binary bytes around its letters (ITU-T G.994.1), so it ends at its last
// byte that is not zero.
template <size_t Size>
std::string vendorOf(const char (&field)[Size]) {
  const std::string_view whole(field, Size);
  return printable(whole.substr(0, whole.find_last_not_of('\0') + 1));
}

void printEnd(cli_def* cli, const QVR_inventoryParameters_t& end) {
  cli_print(cli, "GHS_VENDOR:    %s", vendorOf(end.GHS_VENDOR).c_str());
  cli_print(cli, "SYSTEM_VENDOR: %s", vendorOf(end.SYSTEM_VENDOR).c_str());
  cli_print(cli, "SERIALNR:      %s", textOf(end.SERIALNR).c_str());
  cli_print(cli, "VERSION:       %s", textOf(end.VERSION).c_str());
}

int CLI_showInventory(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_inventoryObject_t inventory{};
  const QVR_retval_t result = QVR_getInventory(line, &inventory);
  if (QVR_STATUS_ERROR(result)) {
    cli_print(cli, "QVR_getInventory failed (%d)", static_cast<int>(result));
    return CLI_OK;
  }
  cli_print(cli, "\nFTU-O:\n");
  printEnd(cli, inventory.FTU_O);
  cli_print(cli, "\nFTU-R:\n");
  printEnd(cli, inventory.FTU_R);
  return CLI_OK;
}

int CLI_setInventory(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_deviceId_t device = words.device(0, "invalid device number {}");
  const char* const vendorId = words.text(1, "");
  const char* const serialNumber = words.text(2, "");
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_inventoryParameters_t inventory{};
  toHexNumber(vendorId, sizeof inventory.SYSTEM_VENDOR, reinterpret_cast<uint8_t*>(inventory.SYSTEM_VENDOR));
  std::memcpy(
      inventory.SERIALNR, serialNumber,
      std::min(std::strlen(serialNumber), sizeof inventory.SERIALNR));  // a full field has no terminator
  const QVR_retval_t status = QVR_setInventoryParams(device, &inventory);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed setting inventory parameters (%1d)", static_cast<int>(status));
  }
  return CLI_OK;
}

constexpr bool anyNumberButFour(int argc) {
  return argc != 4;
}

constexpr Command kInventoryCommands[] = {
    exec("show inventory", "Show inventory information for line", CLI_showInventory, between<0, 1>, kReads,
         "show inventory [<line-id>] : { 0 }"),
    exec("set inventory", "Set some inventory parameters", CLI_setInventory, anyNumberButFour, kChanges,
         "set inventory <device-id> <vendor-id> <serial-number> : vendor-id (hex string) "
         "XX:XX:XX:XX:XX:XX:XX:XX, serial-number (string)"),
};

}  // namespace

std::span<const Command> inventoryCommands() {
  return kInventoryCommands;
}

}  // namespace gfast::console
