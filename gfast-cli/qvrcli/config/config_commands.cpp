#include "qvrcli/config/config_commands.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "qvrcli/config/config_text.h"
#include "qvrcli/config/config_words.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/arguments.h"

namespace gfast::console {

QVR_lineConfig_t configParams;

namespace {

constexpr int kNotRead = 1;

bool stores(const ConfigField& field, const char* direction) {
  switch (field.storedBy) {
    case StoredBy::kWord:
      return true;
    case StoredBy::kDownstream:
      return isKeyword(direction, "ds");
    case StoredBy::kUpstream:
      return isKeyword(direction, "us");
    case StoredBy::kEitherWay:
      return isKeyword(direction, "ds") || isKeyword(direction, "us");
    case StoredBy::kNothing:
      break;
  }
  return false;
}

// Stores what was typed behind the word's keyword: nullptr when that is done, otherwise why not, and the
// record is unchanged.
const char* setField(const ConfigWord& word, const char* const typed[]) {
  const auto field = std::ranges::find_if(
      word.fields, [typed](const ConfigField& candidate) { return stores(candidate, typed[0]); });
  if (field == word.fields.end()) {
    return "invalid parameter - must enter ds or us";
  }
  ConfigValues values;
  const int directionWords = word.takesDirection() ? 1 : 0;
  const char* const refusal = word.accepts.read(word.accepts, typed + directionWords, &values);
  if (refusal == nullptr) {
    field->store(configParams, values);
  }
  return refusal;
}

int edit(cli_def* cli, const ConfigWord& word, char* argv[]) {
  const char* const refusal = setField(word, argv);
  if (refusal != nullptr) {
    cli_print(cli, "%s", refusal);
  }
  return CLI_OK;
}

}  // namespace

#define CONFIG_WORD(handler, keyword, ...)                                         \
  int handler(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) { \
    return edit(cli, configWord(keyword), argv);                                   \
  }
#include "qvrcli/config/config_words.inc"
#undef CONFIG_WORD

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

namespace {

constexpr Command commandOf(const ConfigWord& word) {
  constexpr ArgumentCount kExactly[] = {exactly<0>, exactly<1>, exactly<2>, exactly<3>, exactly<4>};
  const int words = (word.takesDirection() ? 1 : 0) + word.accepts.words;
  // It changes the console's own record only; `save` writes that to a chip.
  return config(word.keyword, word.help, word.handler, kExactly[words], kReads, word.usage);
}

constexpr Command kRecordCommands[] = {
    config("restore", "Restore default line parameters", CLI_setDefaultConfigParams, exactly<0>, kReads,
           "default-params"),
    config("save", "Save configuration parameters to line (same as apply)", CLI_saveLineConfig, between<0, 1>,
           kChanges, "save <line-id>"),
    config("show", "Show configuration parameters", CLI_showConfigParams, exactly<0>, kReads, "show"),
    config("get", "Get configuration parameters for line", CLI_getConfigParams, between<0, 1>, kReads,
           "get [<line-id>] : { 0 }"),
};

constexpr auto kConfigCommands = [] {
  std::array<Command, kConfigWords.size() + std::size(kRecordCommands)> commands{};
  const auto end = std::ranges::transform(kConfigWords, commands.begin(), commandOf).out;
  std::ranges::copy(kRecordCommands, end);
  return commands;
}();

}  // namespace

std::span<const Command> configCommands() {
  return kConfigCommands;
}

}  // namespace gfast::console
