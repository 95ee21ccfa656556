// The processed subcarriers of a line.
#pragma once

#include <qvr.h>

namespace gfast {

// Those of them that the grid has: a chip may say anything.
QVR_linePhyParams_t withinGrid(const QVR_linePhyParams_t& said);

}  // namespace gfast
