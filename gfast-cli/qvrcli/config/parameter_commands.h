// The firmware's parameters: what its dictionary lists, and their values.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

int CLI_showDictionary(cli_def* cli, const char* command, char* argv[], int argc);

// Values are line 0's, whichever line is named.
int CLI_showParams(cli_def* cli, const char* command, char* argv[], int argc);

// The id of a display name, spelt exactly so; QVR_K_PARAM_NAMES when there is none.
uint32_t paramNameToParamId(const char* xi_name);

}  // namespace gfast::console
