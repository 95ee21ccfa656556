#include "qvrcli/serve/encodings.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace gfast::console {

namespace {

constexpr uint8_t kNoOctet = 255;
constexpr uint8_t kOctetNotInUse = 254;
constexpr uint16_t kNoHlog = 1023;
constexpr uint16_t kHlogNotInUse = 1022;

uint8_t noiseCode(float noise_dbmHz) {
  return static_cast<uint8_t>(std::clamp(std::lround(-2 * noise_dbmHz - 70), 0L, 251L));
}

uint16_t hlogCode(float hlog_db) {
  return static_cast<uint16_t>(std::clamp(std::lround((6 - hlog_db) * 10), 0L, 1020L));
}

template <typename Code>
struct Special {
  Code none, notInUse;
};

template <typename Code>
std::vector<Code> codesOfGroups(const Levels& levels, const std::vector<bool>& inUse, Code (*encode)(float),
                                Special<Code> special) {
  std::vector<Code> codes;
  for (size_t first = 0; first < levels.size(); first += kGroupSize) {
    const size_t end = std::min(first + kGroupSize, levels.size());
    Code code = inUse.empty() ? special.none : special.notInUse;
    for (size_t tone = end; tone-- > first;) {
      if (levels[tone]) {
        code = encode(*levels[tone]);
      } else if (tone < inUse.size() && inUse[tone] && code == special.notInUse) {
        code = special.none;
      }
    }
    codes.push_back(code);
  }
  return codes;
}

std::vector<uint8_t> highByteFirst(const std::vector<uint16_t>& codes) {
  std::vector<uint8_t> bytes;
  for (const uint16_t code : codes) {
    bytes.push_back(static_cast<uint8_t>(code >> 8));
    bytes.push_back(static_cast<uint8_t>(code));
  }
  return bytes;
}

template <typename Code>
std::vector<Code> codesOfTones(const Levels& levels, Code (*encode)(float), Code none) {
  std::vector<Code> codes;
  for (const auto& level : levels) {
    codes.push_back(level ? encode(*level) : none);
  }
  return codes;
}

}  // namespace

std::string base64(const std::vector<uint8_t>& bytes) {
  constexpr const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t count = std::min<size_t>(3, bytes.size() - i);
    uint32_t word = 0;
    for (size_t k = 0; k < 3; k++) {
      word = word << 8 | (k < count ? bytes[i + k] : 0U);
    }
    for (size_t k = 0; k < 4; k++) {
      text += k <= count ? kDigits[word >> (18 - 6 * k) & 0x3FU] : '=';
    }
  }
  return text;
}

std::string dateAndTime(time_t time) {
  tm utc{};
  gmtime_r(&time, &utc);
  std::array<char, sizeof "2026-11-22T05:43:31Z" + 8> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

int inTenths(double value, int least, int most) {
  return static_cast<int>(std::clamp<long>(std::lround(value * 10), least, most));
}

std::vector<uint8_t> bitNibbles(const std::vector<uint8_t>& bits) {
  std::vector<uint8_t> nibbles((bits.size() + 1) / 2);
  for (size_t tone = 0; tone < bits.size(); tone++) {
    const auto nibble = static_cast<uint8_t>(bits[tone] & 0xFU);
    nibbles[tone / 2] |= static_cast<uint8_t>(tone % 2 == 0 ? nibble << 4 : nibble);
  }
  return nibbles;
}

std::vector<uint8_t> snrOctets(const Levels& snr_db) {
  return codesOfTones<uint8_t>(
      snr_db, [](float snr) { return static_cast<uint8_t>(std::clamp(std::lround(2 * snr + 64), 0L, 254L)); },
      kNoOctet);
}

std::vector<uint8_t> noiseOctets(const Levels& noise_dbmHz, const std::vector<bool>& inUse) {
  return codesOfGroups<uint8_t>(noise_dbmHz, inUse, noiseCode, {kNoOctet, kOctetNotInUse});
}

std::vector<uint8_t> hlogOctets(const Levels& hlog_db, const std::vector<bool>& inUse) {
  return highByteFirst(codesOfGroups<uint16_t>(hlog_db, inUse, hlogCode, {kNoHlog, kHlogNotInUse}));
}

std::vector<uint8_t> noiseOfTones(const Levels& noise_dbmHz) {
  return codesOfTones<uint8_t>(noise_dbmHz, noiseCode, kNoOctet);
}

std::vector<uint8_t> hlogOfTones(const Levels& hlog_db) {
  return highByteFirst(codesOfTones<uint16_t>(hlog_db, hlogCode, kNoHlog));
}

}  // namespace gfast::console
