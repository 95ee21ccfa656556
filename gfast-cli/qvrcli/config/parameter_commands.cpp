#include "qvrcli/config/parameter_commands.h"

#include <fmt/format.h>

#include <cstring>
#include <string>

#include "qvrcli/session/interpreter.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/hexadecimal.h"
#include "qvrcli/text/labelled_lines.h"

namespace gfast::console {

namespace {

constexpr uint8_t kNameWidth = 35;

const char* nameOf(const QVR_paramInfo_t& entry) {
  return QVR_paramName(static_cast<eConstParams>(entry.param_id));
}

BOOL printEntry(uint32_t /*index*/, const QVR_paramInfo_t* entry) {
  const char* const name = nameOf(*entry);
  cli_print(cli, "%3d %3d %s %s %3d %1d [%08X]", entry->param_entry, entry->param_id, name,
            padding(name, kNameWidth), entry->param_offset, entry->param_len, entry->param_address);
  return TRUE;
}

// A value as it is shown: a number in decimal and hexadecimal, anything else byte by byte.
std::string valueText(const QVR_paramInfo_t& entry, const uint8_t* value) {
  if (entry.param_len == sizeof(uint16_t)) {
    uint16_t number = 0;
    std::memcpy(&number, value, sizeof number);
    return fmt::format("{:3} ({:04X})", number, number);
  }
  if (entry.param_len == sizeof(uint32_t)) {
    uint32_t number = 0;
    std::memcpy(&number, value, sizeof number);
    return fmt::format("{:3} ({:08X})", static_cast<int>(number), number);
  }
  char bytes[3 * QVR_K_MAX_PARAM_LEN + 1];
  toHexString(value, entry.param_len, bytes);
  return bytes;
}

BOOL printParameter(uint32_t index, const QVR_paramInfo_t* entry) {
  alignas(uint32_t) uint8_t value[QVR_K_MAX_PARAM_LEN] = {};
  QVR_getConfigParam(0, static_cast<eConstParams>(index), value);
  const char* const name = nameOf(*entry);
  cli_print(cli, "%3d %s %s [%08X] %s %s %s", entry->param_id, name, padding(name, kNameWidth),
            entry->param_address, valueText(*entry, value).c_str(),
            entry->param_config_state == CONFIG_STATE_LINE ? "LCS" : "SCS",
            entry->param_config_type == CONFIG_TYPE_PER_LINE ? "line" : "device");
  return TRUE;
}

int CLI_showDictionary(cli_def* /*session*/, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  QVR_listDictionary(printEntry);
  return CLI_OK;
}

// Values are line 0's, whichever line is named.
int CLI_showParams(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(session, argv, argc);
  words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_listDictionary(printParameter);
  return CLI_OK;
}

constexpr Command kParameterCommands[] = {
    exec("show dictionary", "Show parameter dictionary", CLI_showDictionary, anyNumber, kReads,
         "show dictionary"),
    exec("show params", "Show device parameter values", CLI_showParams, between<0, 1>, kReads,
         "show params [<lineId>]"),
};

}  // namespace

std::span<const Command> parameterCommands() {
  return kParameterCommands;
}

uint32_t paramNameToParamId(const char* xi_name) {
  uint32_t id = 0;
  while (id < QVR_K_PARAM_NAMES && std::strcmp(QVR_paramName(static_cast<eConstParams>(id)), xi_name) != 0) {
    id++;
  }
  return id;
}

}  // namespace gfast::console
