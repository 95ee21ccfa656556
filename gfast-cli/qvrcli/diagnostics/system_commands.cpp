#include "qvrcli/diagnostics/system_commands.h"

#include <qvr.h>

#include "chip/boot_register.h"
#include "std/bits.h"
#include "std/byte_order.h"

namespace gfast::console {

namespace {

int CLI_showVersion(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_print(cli, "%s", QVR_versionIdent());
  return CLI_OK;
}

// Returns the result code of a failed read to libcli.
int CLI_showSystemRestartState(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  uint8_t sbr[4] = {};
  const QVR_retval_t status = QVR_readmem(QVR_K_DEVICE_ID_FIRST, SBR_REG_ADDRESS, sbr, sizeof sbr);
  if (QVR_STATUS_ERROR(status)) {
    return static_cast<int>(status);
  }
  const bool changed = (load_le32(sbr) & MASK(SBR_SYSTEM_PARAMETER_CHANGE)) != 0;
  cli_print(
      cli, "%s",
      changed ? "system requires restart (system parameter changed)" : "system does NOT require restart");
  return CLI_OK;
}

constexpr Command kSystemCommands[] = {
    exec("show version", "Shows SDK version identifier", CLI_showVersion, anyNumber, kReads, "show version"),
    exec("show system restart-state", "Show system restart state", CLI_showSystemRestartState, exactly<0>,
         kReads, "show system restart-state"),
};

}  // namespace

std::span<const Command> systemCommands() {
  return kSystemCommands;
}

}  // namespace gfast::console
