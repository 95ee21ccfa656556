// Chip memory that is laid out by subcarrier: where each area lies and what stands in it. Every value is
// little-endian. linkId is the line's index within its device; the far end numbers its own line 0.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gfast {

// ---- Sets and bit loading ----

// Medley sets, 132 bytes: 32 bands of two 16-bit subcarriers, then 16 bits each of the number of bands and of
// subcarriers. Type 1 is what the chip transmits on, type 0 what it receives on.
constexpr uint32_t VIRT_ADDR_MEDLEY_SET_DS(uint32_t linkId) {
  return 0xE6000000U | (linkId << 20);
}  // type 0
constexpr uint32_t VIRT_ADDR_MEDLEY_SET_US(uint32_t linkId) {
  return 0xE6080000U | (linkId << 20);
}  // type 1

// Bit loading, one 16-bit entry for each subcarrier from the lowest to the highest of the set: the subcarrier
// in bits 4 to 15, its bits in bits 0 to 3.
constexpr uint32_t VIRT_ADDR_TX_BLT(uint32_t linkId) {
  return 0xE5000000U | (linkId << 20);
}
constexpr uint32_t VIRT_ADDR_RX_BLT(uint32_t linkId) {
  return 0xE5001000U | (linkId << 20);
}
constexpr uint16_t QVR_BLT_TONE_INDEX_MASK = 0xFFF0;
constexpr uint32_t QVR_BLT_TONE_INDEX_OFFSET = 4;
constexpr uint16_t QVR_BLT_TONE_LOADIGN_MASK = 0xF;
constexpr uint16_t QVR_PILOT_BL = 15;  // marks a pilot, which carries no data

// Bit loading of the RMC symbol: entries as above for the RMC's subcarriers only, ended by the stamp. The
// chip writes a new table into the area that is not in use and then turns the index word over: an even index
// points to area 0, an odd one to area 1.
constexpr uint32_t VIRT_ADDR_TX_RMC_BLT_INDEX(uint32_t linkId) {
  return 0xE500B000U | (linkId << 20);
}
constexpr uint32_t VIRT_ADDR_RX_RMC_BLT_INDEX(uint32_t linkId) {
  return 0xE500C000U | (linkId << 20);
}
constexpr uint32_t VIRT_ADDR_TX_RMC_BLT(uint32_t linkId, uint32_t area) {
  return (area == 0 ? 0xE5003000U : 0xE5007000U) | (linkId << 20);
}
constexpr uint32_t VIRT_ADDR_RX_RMC_BLT(uint32_t linkId, uint32_t area) {
  return (area == 0 ? 0xE5004000U : 0xE5008000U) | (linkId << 20);
}
constexpr uint32_t QVR_K_RMC_BLT_SIZE = 4096;  // bytes
constexpr uint16_t LAST_RMC_TONE_STAMP = 0xFFFF;
constexpr uint32_t QVR_MAX_NUMBER_OF_RMC_TONES = 512;

// ---- Measurements of the receiver ----

// Noise energy by subcarrier, seen through a window: a read at the address of subcarrier t answers two equal,
// non-zero guard words (they differ while the chip is writing) and then the values of t, t+1 and so on, 32
// bits each. Subcarriers count from 0, so the first processed one is at 4 * firstTone.
// SNR in dB = 10 * log10(winSize * 2^sseScale / energy).
constexpr uint32_t VIRT_ADDR_SNR_BUF(uint32_t linkId) {
  return 0xE4180000U + (linkId << 22);
}
constexpr uint32_t MAX_TONES_PER_READ_OPERATIONS = 220;

// Coefficients of the frequency-domain equaliser, the inverse of what is received: entry 0 is the first
// processed subcarrier. Mantissas are 16-bit real part, then 16-bit imaginary part, signed; exponents are
// signed bytes; a coefficient is mantissa * 2^exponent * QVR_K_RX_FEQ_UNIT.
constexpr double QVR_K_RX_FEQ_UNIT = 1.0 / 4096;
constexpr uint32_t VIRT_ADDR_RX_FEQ_MAN(uint32_t linkId) {
  return 0xE4080000U + (linkId << 22);
}
constexpr uint32_t VIRT_ADDR_RX_FEQ_EXP(uint32_t linkId) {
  return 0xE4100000U + (linkId << 22);
}
constexpr uint32_t VIRT_ADDR_RX_GAIN(uint32_t linkId) {
  return 0xE4280000U + (linkId << 22);
}  // dB, bits 0-5
constexpr uint32_t VIRT_ADDR_RX_ACE_MODE(uint32_t linkId) {
  return 0xE4300000U + (linkId << 22);
}  // bit 0

// ---- The transmitter ----

// Level handed to the line driver by subcarrier: signed 16-bit, 0.01 dBm/Hz, entry 0 the first processed
// subcarrier. The line driver adds QVR_K_LINE_DRIVER_GAIN_DB, so that much more stands on the line. A
// subcarrier that is not transmitted on shows QVR_K_TX_SIGNAL_OFF.
constexpr uint32_t VIRT_ADDR_TX_SIGNAL(uint32_t linkId) {
  return 0xE4200000U + (linkId << 22);
}
constexpr int16_t QVR_K_TX_SIGNAL_OFF = -32768;
constexpr double QVR_K_TX_SIGNAL_UNIT_DB = 0.01;
constexpr double QVR_K_LINE_DRIVER_GAIN_DB = 4.2;

// Scaling of each subcarrier before the inverse transform: unsigned 16-bit amplitude with 14 fractional bits,
// entry 0 the first processed subcarrier, 0 where nothing is transmitted.
constexpr uint32_t VIRT_ADDR_TX_FEQ(uint32_t linkId) {
  return 0xE4240000U + (linkId << 22);
}
constexpr double QVR_K_TX_FEQ_UNIT = 1.0 / 16384;

// ---- Vectoring coefficients ----

// Seen through a window as the noise energies are: a read at area + n answers two guard words (equal unless
// the chip is writing) and then the bytes from n on. For i and j from 0 to 15 and each pair of subcarriers:
// signed 16-bit real part, signed 16-bit imaginary part, 12 fractional bits.
constexpr double QVR_K_VEC_COEFF_UNIT = 1.0 / 4096;
constexpr uint32_t VIRT_ADDR_RX_VEC_COEFFS(uint32_t linkId) {
  return 0xE4000000U + (linkId << 22);
}
constexpr uint32_t VIRT_ADDR_TX_VEC_COEFFS(uint32_t linkId) {
  return 0xE4380000U + (linkId << 22);
}
// What the two areas hold before the next area begins: 1024 bytes a pair of subcarriers.
constexpr uint32_t QVR_K_MAX_TONE_PAIRS = 512;

}  // namespace gfast
