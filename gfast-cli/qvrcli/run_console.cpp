#include "qvrcli/run_console.h"

#include <csignal>
#include <cstdio>

#include "clock/waiting.h"
#include "qvrcli/qvrcli.h"
#include "qvrcli/session/script_lines.h"
#include "qvrcli/session/server.h"
#include "qvrcli/session/stop.h"

namespace gfast::console {

namespace {

void printToStandardOutput(cli_def* /*interpreter*/, const char* line) {
  std::puts(line);
}

void runScript(cli_def* interpreter, FILE* script) {
  cli_print_callback(interpreter, printToStandardOutput);
  runLines(interpreter, script);
  cli_print_callback(interpreter, nullptr);
  std::fclose(script);
}

}  // namespace

int runConsole(const char* script, uint16_t port) {
  std::signal(SIGCHLD, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  installMayGoOn(commandMayGoOn);
  cli_def* const interpreter = cli_init();
  QVR_cliInit(interpreter);
  FILE* const file = script == nullptr ? nullptr : std::fopen(script, "r");
  if (file != nullptr) {
    runScript(interpreter, file);
    cli_done(interpreter);
    return 0;
  }
  const int listener = openListener(port);
  if (listener < 0) {
    return 1;
  }
  serveSessions(interpreter, listener);
  cli_done(interpreter);
  return 0;
}

}  // namespace gfast::console
