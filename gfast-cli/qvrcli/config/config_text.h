// A line configuration as text, one line a field.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

// Prints every field, with all values in one column. A list ends before its first empty entry. The line's id
// is not printed.
void printConfigParams(cli_def* xi_cli, QVR_lineId_t xi_lineId, const QVR_lineConfig_t& xi_config);

}  // namespace gfast::console
