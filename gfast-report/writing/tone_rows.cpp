#include "gfast-report/writing/tone_rows.h"

#include <fmt/format.h>

namespace gfast::report {

namespace {

using namespace gfast::console;

template <typename Table>
std::string field(const Table& table, size_t tone) {
  if (tone >= table.size()) {
    return ",";
  }
  if constexpr (requires { table[tone].has_value(); }) {
    return table[tone] ? fmt::format(",{:.1f}", *table[tone]) : ",";
  } else {
    return fmt::format(",{}", table[tone]);
  }
}

}  // namespace

std::string toneRows(const LineReading& line) {
  std::string rows = "tone,MHz";
  for (const char* direction : {"downstream", "upstream"}) {
    rows += fmt::format(",bits {0},SNR dB {0},noise dBm/Hz {0},HLOG dB {0}", direction);
  }
  rows += "\r\n";
  for (size_t tone = 0; line.tones && tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
    rows += fmt::format("{},{:.5f}", tone, static_cast<double>(tone) * kToneSpacing_hz / 1e6);
    for (const ToneDirection* tones : {&line.tones->downstream, &line.tones->upstream}) {
      rows += field(tones->bits, tone) + field(tones->snr_db, tone) + field(tones->noise_dbmHz, tone) +
              field(tones->hlog_db, tone);
    }
    rows += "\r\n";
  }
  return rows;
}

}  // namespace gfast::report
