
#include <qvr.h>

#include <chrono>
#include <limits>

#include "qvrcli/diagnostics/diagnostics_commands.h"
#include "qvrcli/events/events.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/argument_reader.h"

namespace gfast::console {

namespace {

constexpr QVR_deviceId_t kAllDevices = -1;

// A script has no session: its standard output has the lines already.
void startDelivery(const cli_def* cli) {
  showLogInSession(cli->client != nullptr);
  QVR_registerLogMessageCB(kAllDevices, handleLogMessage);
}

void stopDelivery() {
  setTerminal(nullptr);
  QVR_registerLogMessageCB(kAllDevices, nullptr);
  showLogInSession(false);
}

// Shows what the chips say from second to second. The first second of the count is over when it begins.
void logFor(cli_def* cli, int seconds) {
  for (int second = 1; second != seconds && sleepInSession(cli, std::chrono::seconds(1)); second++) {
    printWaiting(cli);
  }
}

}  // namespace

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

}  // namespace gfast::console
