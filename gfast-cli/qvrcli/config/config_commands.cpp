#include "qvrcli/config/config_commands.h"

#include "qvrcli/config/config_members.h"
#include "qvrcli/config/config_text.h"
#include "qvrcli/text/argument_reader.h"

namespace gfast::console {

QVR_lineConfig_t configParams;

namespace {

constexpr int kNotRead = 1;

int editMember(cli_def* cli, const ConfigMember& member, char* argv[]) {
  const char* const refusal = setConfigMember(member, argv, configParams);
  if (refusal != nullptr) {
    cli_print(cli, "%s", refusal);
  }
  return CLI_OK;
}

}  // namespace

#define DEFINE_CONFIG_MEMBER_COMMAND(handler, keyword)                             \
  int handler(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) { \
    static const ConfigMember& member = configMember(#keyword);                    \
    return editMember(cli, member, argv);                                          \
  }
CONFIG_MEMBER_COMMANDS(DEFINE_CONFIG_MEMBER_COMMAND)
#undef DEFINE_CONFIG_MEMBER_COMMAND

int CLI_setDefaultConfigParams(cli_def* /*cli*/, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  QVR_getLineConfig(0, &configParams);
  return CLI_OK;
}

int CLI_saveLineConfig(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (!words.refused()) {
    QVR_lineConfig_t current{};
    QVR_getLineConfig(line, &current);
    QVR_setLineConfig(line, &configParams);
  }
  return CLI_OK;
}

int CLI_showConfigParams(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  printConfigParams(cli, 0, configParams);
  return CLI_OK;
}

int CLI_getConfigParams(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  if (QVR_STATUS_ERROR(QVR_getLineConfig(line, &configParams))) {
    cli_print(cli, "QVR_getLineConfig failed");
    return kNotRead;
  }
  printConfigParams(cli, line, configParams);
  return CLI_OK;
}

}  // namespace gfast::console
