// The line that a command is about.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

// The line that the first word names, 0 without one. False after saying which numbers lines have.
bool takeLine(cli_def* cli, const char* const words[], int count, QVR_lineId_t* line);

}  // namespace gfast::console
