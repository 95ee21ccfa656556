// Signals that the test module generates, sends and captures, and what the inter-chip links report.
#pragma once

#include <complex>
#include <cstdint>

// A point of a signal or a spectrum. Products are those of C99, not-a-number and infinity included.
using QVR_complex_t = std::complex<double>;

constexpr uint32_t QVR_K_SIGNAL_POINTS = 4096;
constexpr uint32_t QVR_K_SIGNAL_WORDS = 2048;
constexpr uint32_t QVR_K_MTPR_TONES = 96;

// A symbol in time or, as the transform of a real symbol, in frequency.
using QVR_signal_t = QVR_complex_t[QVR_K_SIGNAL_POINTS];

// A transmit signal: two 16-bit samples a word, two's complement.
using QVR_txSignal_t = uint32_t[QVR_K_SIGNAL_WORDS];

// Missing-tone power ratios; the first QVR_K_MTPR_TONES are filled, entry i of subcarrier 20 * i + 60.
using QVR_MTPR_t = double[1024];

// The chip's sample pair as its word is read: the imaginary part is the word's high half.
struct COMPLEX16 {
  int16_t im;
  int16_t re;
};

// Where a line's processor keeps test memory; n is the line's index within its device.
constexpr uint32_t QVR_K_FDU_BASE_ADDR = 0x90000000;
constexpr uint32_t QVR_K_LINK_ID_OFFSET = 23;
constexpr uint32_t QVR_G_GHS_TX_BUFF0_ADDR(uint32_t n) {
  return (QVR_K_FDU_BASE_ADDR | (n << QVR_K_LINK_ID_OFFSET)) + 0x0003C114;
}
constexpr uint32_t QVR_G_TEST_SNAPSHOT_COUNT_ADDR(uint32_t n) {
  return (QVR_K_FDU_BASE_ADDR | (n << QVR_K_LINK_ID_OFFSET)) + 0x00004940;
}
constexpr uint32_t QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(uint32_t n) {
  return (QVR_K_FDU_BASE_ADDR | (n << QVR_K_LINK_ID_OFFSET)) + 0x00017DD4;
}
constexpr uint32_t QVR_K_TEST_SYMBOL_SIZE = 8192;  // bytes of the transmit buffer and of a captured symbol

// Inter-chip links (Extcom).
constexpr int QVR_K_MAX_DEVICES_IN_CLUSTER = 4;  // that the chips' own programs address
constexpr int E_EXTCOM_PORT_LAST = 6;
constexpr int E_EXTCOM_LANE_LAST = 2;
constexpr int QVR_K_NUMBER_OF_EXTCOM_PORTS_PER_DEVICE = E_EXTCOM_PORT_LAST;
constexpr int QVR_K_NUMBER_OF_LANES_PER_EXTCOM_PORT = E_EXTCOM_LANE_LAST;

struct QVR_extcomPortErrors_t {
  // Errors of the pseudo-random sequence by device, port and lane; -1: not measured.
  int32_t extcomPortErrorsOnDevice[2][QVR_K_NUMBER_OF_EXTCOM_PORTS_PER_DEVICE]
                                  [QVR_K_NUMBER_OF_LANES_PER_EXTCOM_PORT];
};

// Steps of a device program.
enum QVR_memop_t : uint32_t { readmem = 0, writemem = 1 };

struct QVR_instruction_t {
  QVR_memop_t memop;
  int32_t deviceId;
  uint32_t addr;
  // Written: the word. Read: the slot of the module's results that takes it.
  uint32_t value;
};
