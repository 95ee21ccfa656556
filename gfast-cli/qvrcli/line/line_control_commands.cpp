#include "qvrcli/line/line_control_commands.h"

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

constexpr Command kLineControlCommands[] = {
    exec("restart line", "Restart a G.fast line or all active lines", CLI_resetLine, exactly<1>, kChanges,
         "restart line <line-id> | all"),
    exec("activate line", "Activate a line", CLI_activateLine, exactly<1>, kChanges,
         "activate line [<line-id> | all] : { 0 }"),
    exec("deactivate line", "De-activate a line", CLI_deactivateLine, between<0, 1>, kChanges,
         "deactivate line [<line-id> | all] : { 0 }"),
};

}  // namespace

std::span<const Command> lineControlCommands() {
  return kLineControlCommands;
}

}  // namespace gfast::console
