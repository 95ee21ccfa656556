// SNR of each subcarrier, as the receiver at either end measures it.
#pragma once

#include "qvrline/tone_memory.h"

namespace gfast {

// Results and entries as QVR_readSNRTable (near end) and QVR_readFarEndSNRTable.
QVR_retval_t readSnr(const LineInShowtime& line, LineEnd end, QVR_SNRTBL_t snr);

}  // namespace gfast
