// What is drawn of a line's tones.
#pragma once

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

// The bits of tones that carry some, or that have an SNR: a tone out of use has no value.
inline std::vector<std::optional<float>> bitsInUse(const console::ToneDirection& tones) {
  std::vector<std::optional<float>> bits(tones.bits.size());
  for (size_t tone = 0; tone < bits.size(); tone++) {
    if (tones.bits[tone] > 0 || (tone < tones.snr_db.size() && tones.snr_db[tone])) {
      bits[tone] = static_cast<float>(tones.bits[tone]);
    }
  }
  return bits;
}

}  // namespace gfast::report
