// What chips keep by subcarrier, and the requests that ask for it.
#pragma once

#include "support/chip_identity.h"
#include "support/driver_script.h"

using namespace gfast;

constexpr uint32_t kReceivedSet = 0xE6000000;  // type 0
constexpr uint32_t kSentSet = 0xE6080000;      // type 1

struct Band {
  uint16_t first;
  uint16_t last;
  bool operator==(const Band& other) const = default;
};

// The record of a medley set, which may claim another number of bands than it has.
inline Bytes medleySet(const std::vector<Band>& bands, uint16_t claimed) {
  Bytes bytes;
  for (const Band& band : bands) {
    append16(bytes, band.first);
    append16(bytes, band.last);
  }
  bytes.resize(128);
  append16(bytes, claimed);
  append16(bytes, 0);
  return bytes;
}

inline Bytes medleySet(const std::vector<Band>& bands) {
  return medleySet(bands, static_cast<uint16_t>(bands.size()));
}

// How a line is framed, of which the processed subcarriers matter here.
inline Bytes framing(uint32_t firstTone, uint32_t tones) {
  std::vector<uint32_t> block(18);
  block[2] = firstTone;
  block[3] = tones;
  return words(block);
}

inline Script findsTones(int device, uint32_t firstTone, uint32_t tones) {
  return findsLineUp(device) + reads(device, 0xE2400000, framing(firstTone, tones));
}

// Noise energies as they are seen through the window.
inline Bytes window(const std::vector<uint32_t>& energies, uint32_t firstGuard = 7,
                    uint32_t secondGuard = 7) {
  return words({firstGuard, secondGuard}) + words(energies);
}

inline Script readsScaling(int device, uint32_t windowSize, uint32_t scale) {
  std::vector<uint32_t> block(13);
  block[2] = windowSize;
  block[3] = scale;
  return reads(device, 0xE2000000, words(block));
}

inline Script asksSnrBlock(int device, uint16_t first, uint16_t last, const Bytes& answer) {
  Bytes request{4};
  append16(request, first);
  append16(request, last);
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, request, 2U + last - first + 1,
                       answer);
}

// The far end's SNR from subcarrier 0 on; the measurement time says nothing.
inline Script asksFarEndSnr(int device, const Bytes& values) {
  return inPieces(values, 248, [&](uint32_t first, const Bytes& piece) {
    return asksSnrBlock(device, static_cast<uint16_t>(first), static_cast<uint16_t>(first + piece.size() - 1),
                        Bytes(2, 0x5A) + piece);
  });
}
