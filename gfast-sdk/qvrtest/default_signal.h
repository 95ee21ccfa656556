// The signal that is sent when none is given.
#pragma once

#include <qvr.h>

#include <array>

namespace gfast {

// The 4096 samples of a symbol of the test pattern, two a word, the low half the earlier: the order in which
// the chip sends and captures. It carries the tones of the pattern and, but for the rounding of samples,
// nothing else. The largest sample is 16384; crest factor 11.5 dB.
extern const std::array<uint32_t, QVR_K_SIGNAL_WORDS> defaultTxSignal;

}  // namespace gfast
