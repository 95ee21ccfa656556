#include "qvrcli/device/callback_commands.h"

#include <qvr.h>

#include <cstdint>

#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/arguments.h"
#include "qvrcli/text/local_time.h"

namespace gfast::console {

namespace {

int callback_handle = QVR_K_NULL_HANDLE;

// Unregistering returns 0, which becomes the handle: unregistering once more frees slot 0.
void unregisterCallback(cli_def* cli) {
  callback_handle = QVR_register15minCounterEventCB(callback_handle, nullptr);
  cli_print(cli, "Callback with handle %1d unregistered", callback_handle);
}

void registerCallback(cli_def* cli) {
  const int handle = QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, CLI_15minEventCallback);
  if (handle == QVR_K_NULL_HANDLE) {
    cli_print(cli, "Failed registering callback");
    return;
  }
  callback_handle = handle;
  const auto address = reinterpret_cast<uintptr_t>(&CLI_15minEventCallback);
  cli_print(cli, "Callback at address %08x with handle %1d registered", static_cast<uint32_t>(address),
            handle);
}

}  // namespace

int CLI_register15minCallback(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  if (argc == 0) {
    registerCallback(cli);
  } else if (argc == 1 && isKeyword(argv[0], "null")) {
    unregisterCallback(cli);
  } else {
    cli_print(cli, "register callback [NULL]");
  }
  return CLI_OK;
}

// Runs on the notification thread, which must not print to the session.
void CLI_15minEventCallback(time_t boundary) {
  printLater(("Event occurred at " + localTimeText(boundary)).c_str());
}

}  // namespace gfast::console
