#include "qvrcli/session/settings.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace gfast::console {

namespace {

struct Variable {
  const char* name;
  bool (*read)(const char* text, Settings& settings);  // false when the text is not as it should be
  const char* expected;
};

bool readListen(const char* text, Settings& settings) {
  settings.listen = parseEndpoint(text);
  return settings.listen.has_value();
}

bool readAllowed(const char* text, Settings& settings) {
  settings.allowed = parseNetworks(text);
  return settings.allowed.has_value();
}

bool readFilesFolder(const char* text, Settings& settings) {
  settings.filesFolder = text;
  return !settings.filesFolder->empty();
}

bool readReadOnly(const char* text, Settings& settings) {
  settings.readOnly = std::string_view(text) == "1";
  return settings.readOnly || std::string_view(text) == "0";
}

bool readLog(const char* text, Settings& settings) {
  settings.log = text;
  return !settings.log->empty();
}

constexpr Variable kVariables[] = {
    {"GFAST_LISTEN", readListen, "must be an IPv4 address, or one with a port like 127.0.0.1:9000"},
    {"GFAST_ALLOW", readAllowed, "must list IPv4 addresses and networks, like 192.0.2.7,10.0.0.0/8"},
    {"GFAST_FILES", readFilesFolder, "must be the name of a folder"},
    {"GFAST_READ_ONLY", readReadOnly, "must be 1 or 0"},
    {"GFAST_LOG", readLog, "must be the name of a file, or syslog"},
};

}  // namespace

std::optional<Settings> readSettings() {
  Settings settings;
  for (const Variable& variable : kVariables) {
    const char* const text = std::getenv(variable.name);
    if (text != nullptr && !variable.read(text, settings)) {
      std::fprintf(stderr, "%s=%s: %s\n", variable.name, text, variable.expected);
      return std::nullopt;
    }
  }
  return settings;
}

}  // namespace gfast::console
