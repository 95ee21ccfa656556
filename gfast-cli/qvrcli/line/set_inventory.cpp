
#include <qvr.h>

#include <algorithm>
#include <cstring>

#include "qvrcli/diagnostics/diagnostics_commands.h"
#include "qvrcli/text/arguments.h"
#include "qvrcli/text/hexadecimal.h"

namespace gfast::console {

int CLI_setInventory(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  int deviceId = 0;
  if (argc > 0 && !isValidDeviceId(argv[0], &deviceId)) {
    cli_print(cli, "invalid device number %s", argv[0]);
    return CLI_OK;
  }
  const char* const vendorId = argc > 1 ? argv[1] : "";
  const char* const serialNumber = argc > 2 ? argv[2] : "";
  QVR_inventoryParameters_t inventory{};
  toHexNumber(vendorId, sizeof inventory.SYSTEM_VENDOR, reinterpret_cast<uint8_t*>(inventory.SYSTEM_VENDOR));
  std::memcpy(
      inventory.SERIALNR, serialNumber,
      std::min(std::strlen(serialNumber), sizeof inventory.SERIALNR));  // a full field has no terminator
  const QVR_retval_t status = QVR_setInventoryParams(deviceId, &inventory);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed setting inventory parameters (%1d)", static_cast<int>(status));
  }
  return CLI_OK;
}

}  // namespace gfast::console
