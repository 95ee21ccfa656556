#include "qvrcli/device/device_commands.h"
#include "qvrcli/text/argument_reader.h"

namespace gfast::console {

namespace {

int setActivation(cli_def* cli, char* argv[], int argc, BOOL activate) {
  ArgumentReader words(cli, argv, argc);
  if (words.is(0, "all")) {
    for (QVR_lineId_t line = 0; line <= QVR_K_LINE_ID_LAST; line++) {
      QVR_activateLine(line, activate);
    }
    return CLI_OK;
  }
  const QVR_lineId_t line = words.line(0);
  if (!words.refused()) {
    QVR_activateLine(line, activate);
  }
  return CLI_OK;
}

}  // namespace

int CLI_resetLine(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  if (words.is(0, "all")) {
    QVR_resetLines();
    return CLI_OK;
  }
  const QVR_lineId_t line = words.line(0);
  if (!words.refused()) {
    QVR_resetLine(line);
  }
  return CLI_OK;
}

int CLI_activateLine(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return setActivation(cli, argv, argc, TRUE);
}

int CLI_deactivateLine(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return argc > 0 ? setActivation(cli, argv, argc, FALSE) : CLI_OK;
}

}  // namespace gfast::console
