// A line configuration as text, one line a field.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

// Prints every field behind its name, all values in one column; of the lists, what comes before the first
// empty entry. The line's id is not shown.
void printConfigParams(cli_def* xi_cli, QVR_lineId_t xi_lineId, const QVR_lineConfig_t& xi_config);

}  // namespace gfast::console
