// Chip memory by subcarrier, as a host reads it.
#pragma once

#include <cmath>
#include <vector>

#include "chip/tones.h"
#include "unit/virtual-board/measured/counters.h"

// In as many requests as are needed.
inline std::vector<uint8_t> readBytes(Bench& bench, int device, uint32_t address, size_t length) {
  std::vector<uint8_t> bytes;
  while (bytes.size() < length) {
    const auto part = static_cast<uint16_t>(std::min<size_t>(length - bytes.size(), 900));
    const auto read = fromHex(bench.read(device, address + static_cast<uint32_t>(bytes.size()), part));
    bytes.insert(bytes.end(), read.begin(), read.end());
    if (read.size() != part) {
      break;
    }
  }
  bytes.resize(length);
  return bytes;
}

// What a receiver measures, by subcarrier; the index is the subcarrier.
struct Measured {
  std::vector<double> snr;  // signal alone over noise, as a ratio
  std::vector<double> received_dbm_hz;
  std::vector<double> noise_dbm_hz;
};

inline Measured measured(Bench& bench, int device) {
  Measured tones{std::vector<double>(2048), std::vector<double>(2048), std::vector<double>(2048)};
  const auto init = bench.block<GFAST_FDU_INIT_COUNTERS_S>(device, kFduInit);
  const auto mantissas = readBytes(bench, device, VIRT_ADDR_RX_FEQ_MAN(0), kProcessedTones * 4);
  const auto exponents = readBytes(bench, device, VIRT_ADDR_RX_FEQ_EXP(0), kProcessedTones);
  const bool ace = (bench.word(device, VIRT_ADDR_RX_ACE_MODE(0)) & 1) != 0;
  const double gain = bench.word(device, VIRT_ADDR_RX_GAIN(0)) & 63;
  for (uint32_t entry = 0; entry < kProcessedTones; entry++) {
    const uint32_t tone = kFirstTone + entry;
    if (entry % 200 == 0) {
      const auto count = std::min<uint32_t>(200, kProcessedTones - entry);
      const auto window =
          fromHex(bench.read(device, VIRT_ADDR_SNR_BUF(0) + 4 * tone, static_cast<uint16_t>(8 + 4 * count)));
      for (uint32_t i = 0; i < count; i++) {
        tones.snr[tone + i] = init.winSize * std::exp2(init.sseScale) / load_le32(&window[8 + 4 * i]) - 1;
      }
    }
    const auto part = [&](size_t at) { return static_cast<int16_t>(load_le16(&mantissas[at])); };
    const double re = part(4 * entry);
    const double im = part(4 * entry + 2);
    const double scale = std::exp2(static_cast<int8_t>(exponents[entry]) - 12);
    const double share = tone * 51750.0 / 106e6;
    const double path = ace ? 1.10 - 0.40 * share + 3.60 * share * share - 55.47
                            : 0.25 - 0.15 * share + 2.30 * share * share - 35.72;
    tones.received_dbm_hz[tone] = -10 * std::log10((re * re + im * im) * scale * scale) + path - gain;
    tones.noise_dbm_hz[tone] = tones.received_dbm_hz[tone] - 10 * std::log10(1 + tones.snr[tone]);
  }
  return tones;
}

// Bits by subcarrier that this chip receives; pilots have none.
inline std::vector<uint32_t> bitsReceived(Bench& bench, int device) {
  std::vector<uint32_t> table(2048);
  const auto bytes = readBytes(bench, device, VIRT_ADDR_RX_BLT(0), kProcessedTones * 2);
  for (size_t i = 0; i < bytes.size(); i += 2) {
    const uint16_t entry = load_le16(&bytes[i]);
    const uint32_t bits = entry & 15U;
    table[entry >> 4] = bits == QVR_PILOT_BL ? 0 : bits;
  }
  return table;
}
