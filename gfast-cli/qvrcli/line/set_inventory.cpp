
#include <qvr.h>

#include <algorithm>
#include <cstring>

#include "qvrcli/diagnostics/diagnostics_commands.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/hexadecimal.h"

namespace gfast::console {

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

}  // namespace gfast::console
