#include "qvrcli/qvrcli.h"

#include <fmt/format.h>

#include <cstdio>

#include "qvrcli/build_time.h"
#include "qvrcli/config/config_commands.h"
#include "qvrcli/events/events.h"
#include "qvrcli/session/interpreter.h"
#include "qvrcli/session/interpreter_guard.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/vocabulary/command_tree.h"

namespace gfast::console {

namespace {

constexpr int kRegularInterval = 5;  // seconds

// Runs now and then while the interpreter waits for input. What it prints begins on a line of its own, below
// the text that is being typed, and then the prompt and that text are shown again.
int showWaiting(cli_def* interpreter) {
  if (linesWait()) {
    cli_print(interpreter, "%s", "");
    printWaiting(interpreter);
    cli_reprompt(interpreter);
  }
  return CLI_OK;
}

void warn(cli_def* interpreter, const char* text) {
  if (interpreter->client == nullptr && interpreter->print_callback == nullptr) {
    std::puts(text);
  } else {
    cli_print(interpreter, "%s", text);
  }
}

}  // namespace

QVR_retval_t QVR_cliInit(cli_def* xi_cli) {
  cli = xi_cli;
  guardInterpreter(xi_cli);
  cli_set_banner(xi_cli,
                 fmt::format("Welcome to Quelvor G.fast CLI environment (build: {})", kBuildTime).c_str());
  cli_set_hostname(xi_cli, "(gfast-cli)");
  cli_telnet_protocol(xi_cli, 1);
  cli_regular_interval(xi_cli, kRegularInterval);
  cli_regular(xi_cli, showWaiting);
  cli_set_auth_callback(xi_cli, nullptr);
  cli_set_enable_callback(xi_cli, nullptr);
  registerCommandTree(xi_cli);
  if (QVR_STATUS_ERROR(QVR_initFastModule(FALSE))) {
    warn(xi_cli, "Warning: Failed to connect to DFEs");
  }
  QVR_initTestModule();
  QVR_initTraceLogModule();
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  registerEventHandlers();
  QVR_getLineConfig(0, &configParams);
  return QVR_E_STATUS_OK;
}

}  // namespace gfast::console
