// The console's start.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

// Sets the interpreter up (banner, prompt, no passwords), registers the vocabulary, starts the library and
// registers the console's event handlers. Called once. Always returns QVR_E_STATUS_OK: without devices it
// prints a warning, and commands print their own messages.
QVR_retval_t QVR_cliInit(cli_def* xi_cli);

}  // namespace gfast::console
