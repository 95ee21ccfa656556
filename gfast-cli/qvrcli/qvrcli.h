// The console's one interpreter and its start.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

// The interpreter QVR_cliInit was given; every handler and event display handler prints through it.
extern cli_def* cli;

// Dresses the interpreter (banner, prompt, no passwords), registers the vocabulary, starts the library and
// hooks the console's event handlers. Called once. Always QVR_E_STATUS_OK: without devices it prints a
// warning, and commands answer with their own messages.
QVR_retval_t QVR_cliInit(cli_def* xi_cli);

}  // namespace gfast::console
