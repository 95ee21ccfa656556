// What the test signals carry: one QPSK point a subcarrier, and subcarriers left empty on purpose.
#pragma once

#include <qvr.h>

#include <array>

namespace gfast {

constexpr uint32_t kPatternTones = 2048;
constexpr uint32_t kFirstLoadedTone = 43;
constexpr uint32_t kLastLoadedTone = 1972;
constexpr uint32_t kEmptyToneSpacing = 20;  // multiples of it stay empty, to show what leaks from others

// The point of each subcarrier: 1 for subcarrier 0, otherwise +-1 +-1i.
extern const std::array<QVR_complex_t, kPatternTones> kpatternFreq;

constexpr bool isLoadedTone(uint32_t tone) {
  return tone >= kFirstLoadedTone && tone <= kLastLoadedTone && tone % kEmptyToneSpacing != 0;
}

// The lower half of a symbol's spectrum, `tones` points: the pattern where tones are loaded, 0 elsewhere.
void writePattern(QVR_complex_t* spectrum, uint32_t tones);

}  // namespace gfast
