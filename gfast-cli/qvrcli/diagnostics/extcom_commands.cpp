#include "qvrcli/diagnostics/extcom_commands.h"

#include <qvr.h>

#include <algorithm>

#include "qvrcli/session/session_stream.h"

namespace gfast::console {

namespace {

constexpr int32_t kNotMeasured = -1;

void printErrors(cli_def* cli, const QVR_extcomPortErrors_t& errors) {
  cli_print(cli, "[device, port, lane] = errors");
  for (int device = 0; device < QVR_K_MAX_DEVICES; device++) {
    for (int port = 0; port < QVR_K_NUMBER_OF_EXTCOM_PORTS_PER_DEVICE; port++) {
      for (int lane = 0; lane < QVR_K_NUMBER_OF_LANES_PER_EXTCOM_PORT; lane++) {
        cli_print(cli, "[%02d, %02d, %02d] = %d", device, port, lane,
                  errors.extcomPortErrorsOnDevice[device][port][lane]);
      }
    }
  }
}

int CLI_startExtcomTest(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  flushSession(cli);  // the device program may end the process
  const QVR_retval_t status = QVR_startExtcomConnectivityTest();
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed starting Extcom Connectivity Test (%1d)", static_cast<int>(status));
  }
  return CLI_OK;
}

int CLI_showExtcomTestResults(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  flushSession(cli);
  QVR_extcomPortErrors_t errors;
  auto* const first = &errors.extcomPortErrorsOnDevice[0][0][0];
  std::fill_n(first, sizeof errors / sizeof *first, kNotMeasured);
  const QVR_retval_t status = QVR_getExtcomConnectivityTestResults(&errors);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed getting Extcom Connectivity Test (%1d)", static_cast<int>(status));
  }
  printErrors(cli, errors);
  return CLI_OK;
}

constexpr Command kExtcomCommands[] = {
    exec("show extcom-results", "Shows Extcom test results", CLI_showExtcomTestResults, between<0, 1>,
         kChanges, "start extcom-text"),
    exec("start extcom-test", "Starts Extcom PRBS test", CLI_startExtcomTest, between<0, 1>, kChanges,
         "start extcom-text"),
};

}  // namespace

std::span<const Command> extcomCommands() {
  return kExtcomCommands;
}

}  // namespace gfast::console
