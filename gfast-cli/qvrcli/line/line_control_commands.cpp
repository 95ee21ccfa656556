#include "qvrcli/device/device_commands.h"
#include "qvrcli/text/arguments.h"
#include "qvrcli/text/line_argument.h"

namespace gfast::console {

namespace {

int setActivation(cli_def* cli, const char* word, BOOL activate) {
  int lineId = 0;
  if (isKeyword(word, "all")) {
    for (QVR_lineId_t line = 0; line <= QVR_K_LINE_ID_LAST; line++) {
      QVR_activateLine(line, activate);
    }
  } else if (takeLine(cli, &word, 1, &lineId)) {
    QVR_activateLine(lineId, activate);
  }
  return CLI_OK;
}

}  // namespace

int CLI_resetLine(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) {
  int lineId = 0;
  if (isKeyword(argv[0], "all")) {
    QVR_resetLines();
  } else if (takeLine(cli, argv, 1, &lineId)) {
    QVR_resetLine(lineId);
  }
  return CLI_OK;
}

int CLI_activateLine(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) {
  return setActivation(cli, argv[0], TRUE);
}

int CLI_deactivateLine(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return argc > 0 ? setActivation(cli, argv[0], FALSE) : CLI_OK;
}

}  // namespace gfast::console
