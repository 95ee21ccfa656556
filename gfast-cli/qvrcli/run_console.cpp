#include "qvrcli/run_console.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <optional>
#include <vector>

#include "clock/waiting.h"
#include "qvrcli/qvrcli.h"
#include "qvrcli/serve/serve.h"
#include "qvrcli/session/doorkeeper.h"
#include "qvrcli/session/log_output.h"
#include "qvrcli/session/script_lines.h"
#include "qvrcli/session/server.h"
#include "qvrcli/session/settings.h"
#include "qvrcli/session/stop.h"
#include "qvrcli/text/named_files.h"
#include "qvrcli/text/standard_output.h"
#include "qvrcli/vocabulary/command_tree.h"

namespace gfast::console {

namespace {

constexpr int kSettingsError = 2;

// False after a message.
bool protect(const Settings& settings) {
  if (settings.filesFolder && !keepFilesInside(settings.filesFolder->c_str())) {
    std::fprintf(stderr, "GFAST_FILES=%s: %s\n", settings.filesFolder->c_str(), std::strerror(errno));
    return false;
  }
  if (settings.readOnly) {
    refuseChanges();
  }
  return true;
}

int listenOn(uint16_t port, const std::optional<Endpoint>& endpoint) {
  return endpoint ? openListener(endpoint->port.value_or(port), endpoint->address) : openListener(port);
}

std::function<bool(int connection)> admittedBy(const std::optional<std::vector<Network>>& allowed) {
  if (!allowed) {
    return [](int) { return true; };
  }
  return [networks = *allowed](int connection) { return isAllowed(connection, networks); };
}

void printToStandardOutput(cli_def* /*interpreter*/, const char* line) {
  std::puts(line);
}

// A folder can be opened, and is only told from an empty script when it is read.
void reportUnreadable(FILE* script, const char* path) {
  const int first = std::getc(script);
  if (first == EOF && std::ferror(script) != 0) {
    std::fprintf(stderr, "%s: %s\n", path, std::strerror(errno));
  }
  std::ungetc(first, script);
}

void runScript(cli_def* interpreter, FILE* script) {
  cli_print_callback(interpreter, printToStandardOutput);
  runLines(interpreter, script);
  cli_print_callback(interpreter, nullptr);
  std::fclose(script);
}

}  // namespace

int runConsole(const char* script, uint16_t port, const char* http) {
  const auto settings = readSettings();
  if (!settings || !protect(*settings)) {
    return kSettingsError;
  }
  std::signal(SIGCHLD, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  FILE* const file = script == nullptr ? nullptr : std::fopen(script, "r");
  // What a script prints goes to whoever runs it.
  if (file == nullptr && settings->log) {
    logTo(*settings->log);
  }
  installMayGoOn(commandMayGoOn);
  cli_def* const interpreter = cli_init();
  QVR_cliInit(interpreter);
  if (http != nullptr && *http != '\0' && !serveReadings(http, admittedBy(settings->allowed))) {
    return 1;
  }
  if (file != nullptr) {
    reportUnreadable(file, script);
    runScript(interpreter, file);
    cli_done(interpreter);
    finishStandardOutput();
    return 0;
  }
  const int listener = listenOn(port, settings->listen);
  if (listener < 0) {
    return 1;
  }
  serveSessions(interpreter, listener, settings->allowed);
  cli_done(interpreter);
  finishStandardOutput();
  return 0;
}

}  // namespace gfast::console
