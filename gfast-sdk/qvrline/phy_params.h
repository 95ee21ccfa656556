// The processed subcarriers of a line.
#pragma once

#include <qvr.h>

namespace gfast {

// Limits them to the grid: a chip may report anything.
QVR_linePhyParams_t withinGrid(const QVR_linePhyParams_t& said);

}  // namespace gfast
