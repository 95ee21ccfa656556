#include "qvrcli/diagnostics/logging_commands.h"

#include <qvr.h>

#include <chrono>
#include <limits>

#include "qvrcli/events/events.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/arguments.h"

namespace gfast::console {

namespace {

constexpr QVR_deviceId_t kAllDevices = -1;

// A script has no session: its log lines are on standard output already.
void startDelivery(const cli_def* cli) {
  showLogInSession(cli->client != nullptr);
  QVR_registerLogMessageCB(kAllDevices, handleLogMessage);
}

void stopDelivery() {
  setTerminal(nullptr);
  QVR_registerLogMessageCB(kAllDevices, nullptr);
  showLogInSession(false);
}

// Prints once a second what the chips have logged. The count of seconds begins at 1, so it waits one less.
void logFor(cli_def* cli, int seconds) {
  for (int second = 1; second != seconds && sleepInSession(cli, std::chrono::seconds(1)); second++) {
    printWaiting(cli);
  }
}

int CLI_startLogging(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const int seconds = words.number(0, 0, std::numeric_limits<int>::max(), "Invalid seconds counter", 0);
  if (words.refused()) {
    return CLI_OK;
  }
  startDelivery(cli);
  cli_print(cli, "Logging started...");
  if (seconds == 0) {
    return CLI_OK;
  }
  logFor(cli, seconds);
  stopDelivery();
  cli_print(cli, "Logging stopped...");
  return CLI_OK;
}

int CLI_stopLogging(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  stopDelivery();
  cli_print(cli, "Logging stopped");
  return CLI_OK;
}

int CLI_showLogLevel(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_print(cli, "%s", QVR_traceLogLevelString(QVR_traceLogLevel()));
  return CLI_OK;
}

// A number out of range is reported and set all the same; a word without a number changes nothing.
int CLI_setLogLevel(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) {
  auto level = static_cast<int>(QVR_traceLogLevel());
  if (!isValidNumber(argv[0], QVRLOG_CRIT, QVRLOG_DEBUG, &level)) {
    cli_print(cli, "Invalid log level - must be between %d and %d", QVRLOG_CRIT, QVRLOG_DEBUG);
  }
  QVR_setTraceLogLevel(static_cast<QVR_logSeverity_t>(level));
  return CLI_OK;
}

constexpr Command kLoggingCommands[] = {
    exec("show log-level", "Show current log level", CLI_showLogLevel, exactly<0>, kReads, "show log-level"),
    exec("set log-level", "Set current log level", CLI_setLogLevel, exactly<1>, kReads,
         "set log-level <0..4> : 0=LOG_CRIT, 1=LOG_ERR, 2=LOG_WARNING, 3=LOG_INFO, 4=LOG_DEBUG"),
    exec("start logging", "Starts terminal logging", CLI_startLogging, between<0, 1>, kChanges,
         "start logging [<seconds>] [<filename>] : { <0>, <stdout> }"),
    exec("stop logging", "Stops terminal logging", CLI_stopLogging, between<0, 1>, kReads, "stop logging "),
};

}  // namespace

std::span<const Command> loggingCommands() {
  return kLoggingCommands;
}

}  // namespace gfast::console
