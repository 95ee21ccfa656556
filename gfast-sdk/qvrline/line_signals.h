// What is received and sent on each processed subcarrier, at either end.
#pragma once

#include "qvrline/tone_memory.h"

namespace gfast {

// Results and entries as QVR_readRxSignal, QVR_readTxSignal and QVR_readTxFEQ of a line in showtime. Outputs
// are untouched on failure.
QVR_retval_t readReceived(const LineInShowtime& line, LineEnd end, double* feq, double* calibrated,
                          QVR_AFE_PARAMS_t* afe);
QVR_retval_t readSent(const LineInShowtime& line, LineEnd end, double* level);
QVR_retval_t readSentAmplitude(const LineInShowtime& line, LineEnd end, double* amplitude);

}  // namespace gfast
