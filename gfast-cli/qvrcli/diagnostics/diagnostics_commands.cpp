#include "qvrcli/diagnostics/diagnostics_commands.h"

#include <qvr.h>

#include "chip/boot_register.h"
#include "qvrcli/text/arguments.h"
#include "std/bits.h"
#include "std/byte_order.h"

namespace gfast::console {

int CLI_showVersion(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_print(cli, "%s", QVR_versionIdent());
  return CLI_OK;
}

int CLI_showLogLevel(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_print(cli, "%s", QVR_traceLogLevelString(QVR_traceLogLevel()));
  return CLI_OK;
}

// A word without a number leaves the level as it is; a number out of range is reported and becomes the level.
int CLI_setLogLevel(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) {
  auto level = static_cast<int>(QVR_traceLogLevel());
  if (!isValidNumber(argv[0], QVRLOG_CRIT, QVRLOG_DEBUG, &level)) {
    cli_print(cli, "Invalid log level - must be between %d and %d", QVRLOG_CRIT, QVRLOG_DEBUG);
  }
  QVR_setTraceLogLevel(static_cast<QVR_logSeverity_t>(level));
  return CLI_OK;
}

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

}  // namespace gfast::console
