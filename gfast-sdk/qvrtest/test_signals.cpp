// Test signals: generated from the pattern, sent, captured.
#include <qvr.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "chip/test_memory.h"
#include "clock/waiting.h"
#include "qvrline/line_table.h"
#include "qvrlog/qvrlog.h"
#include "qvrtest/default_signal.h"
#include "qvrtest/fft.h"
#include "qvrtest/test_pattern.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

using namespace std::chrono_literals;

constexpr auto kActivationTime = 1s;
constexpr auto kSnapshotPoll = 50ms;
constexpr int kMostSnapshotPolls = 10;
constexpr uint32_t kSnapshotRequest = 1;

constexpr double kLargestSample = 16384;
constexpr uint32_t kSampleMask = 0xFFFF;
constexpr int kSampleBits = 16;

// A symbol as chip bytes and as points to transform: too large for the board's stacks.
uint8_t temp[QVR_K_TEST_SYMBOL_SIZE];
COMPLEX16 samplePairs[QVR_K_SIGNAL_WORDS];
QVR_signal_t realVector;

// Reads the line's device and activates an idle line. A failed activation is ignored.
QVR_retval_t wakeLine(QVR_lineId_t lineId, const QVR_lineDescriptor_t& line) {
  QVR_deviceInfo_t info;
  const QVR_retval_t status = QVR_getDeviceInfo(line.deviceId, &info);
  if (QVR_STATUS_OK(status) && info.lineState[line.narrowLineID] == LS_IDLE) {
    QVR_activateLine(lineId, TRUE);
    return waitWhileAllowed(kActivationTime) ? status : QVR_E_TIMEOUT_ERROR;
  }
  return status;
}

// Computes the symbol of the pattern in realVector; false without memory for the transform.
bool generateSymbol(uint32_t tones) {
  if (!FFT_init(static_cast<int>(tones), FALSE, TRUE)) {
    return false;
  }
  // The transform completes the spectrum by itself.
  std::fill(std::begin(realVector), std::end(realVector), 0);
  writePattern(realVector, tones);
  FFT_inverseTransform(realVector, realVector);
  return true;
}

float largestMagnitude(const QVR_complex_t* signal, uint32_t points) {
  double largest = 0;
  for (uint32_t i = 0; i < points; i++) {
    largest = std::max(largest, std::abs(signal[i].real()));
  }
  return static_cast<float>(largest);
}

// A sample in two's complement, relative to the largest of its signal.
uint32_t sampleOf(const QVR_complex_t& point, float largest) {
  if (largest == 0) {
    return 0;  // no tone was loaded
  }
  const double sample = std::round(point.real() / static_cast<double>(largest) * kLargestSample);
  return static_cast<uint32_t>(static_cast<int32_t>(sample)) & kSampleMask;
}

// The chip counts the request down to 0 once the symbol is there. Its big-endian master writes and reads this
// word without a swap, unlike every other.
QVR_retval_t captureSymbol(QVR_deviceId_t device, uint32_t counterAddress) {
  uint8_t counter[4];
  store_be32(counter, kSnapshotRequest);
  QVR_retval_t status = QVR_writemem(device, counterAddress, counter, sizeof counter);
  for (int poll = 0; QVR_STATUS_OK(status) && poll < kMostSnapshotPolls; poll++) {
    if (!waitWhileAllowed(kSnapshotPoll)) {
      return QVR_E_TIMEOUT_ERROR;
    }
    status = QVR_readmem(device, counterAddress, counter, sizeof counter);
    if (load_be32(counter) == 0) {
      break;
    }
  }
  return status;
}

COMPLEX16 pairOf(uint32_t word) {
  return {static_cast<int16_t>(word >> kSampleBits), static_cast<int16_t>(word & kSampleMask)};
}

// The captured symbol, from the chip's bytes to realVector.
void convertSymbol() {
  for (uint32_t i = 0; i < QVR_K_SIGNAL_WORDS; i++) {
    samplePairs[i] = pairOf(load_le32(&temp[i * sizeof(uint32_t)]));
  }
  FFT_convertToRealVector(realVector, samplePairs);
}

}  // namespace

QVR_retval_t QVR_generateRandomTxSignal(uint32_t /*xi_startTone*/, uint32_t /*xi_endTone*/,
                                        uint32_t xi_numberOfTones, uint32_t* xo_txSignal) {
  if (xi_numberOfTones > QVR_K_SIGNAL_WORDS) {
    return QVR_E_INVALID_OPERATION;
  }
  if (!generateSymbol(xi_numberOfTones)) {
    return QVR_E_FAILED_TO_ALLOCATE_MEMORY;
  }
  const float largest = largestMagnitude(realVector, 2 * xi_numberOfTones);
  for (uint32_t i = 0; i < xi_numberOfTones; i++) {
    const uint32_t low = i == 0 ? 0 : sampleOf(realVector[2 * i - 1], largest);
    xo_txSignal[i] = sampleOf(realVector[2 * i + 1], largest) << kSampleBits | low;
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_startSignalTransmission(QVR_lineId_t xi_lineId, const uint32_t* xi_txSignal) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (const QVR_retval_t status = wakeLine(xi_lineId, line); QVR_STATUS_ERROR(status)) {
    return status;
  }
  const uint32_t* words = xi_txSignal == nullptr ? defaultTxSignal.data() : xi_txSignal;
  for (uint32_t i = 0; i < QVR_K_SIGNAL_WORDS; i++) {
    store_le32(&temp[i * sizeof(uint32_t)], words[i]);
  }
  const uint32_t address = QVR_G_GHS_TX_BUFF0_ADDR(line.narrowLineID);
  TRACE_LOG(QVRLOG_DEBUG, "QVR_G_GHS_TX_BUFF0_ADDR = %08X\n", address);
  return QVR_writemem(line.deviceId, address, temp, sizeof temp);
}

QVR_retval_t QVR_receiveSignalSnapshot(QVR_lineId_t xi_lineId, QVR_complex_t* xo_timeDomainSignal,
                                       QVR_complex_t* xo_freqDomainSignal) {
  if (!FFT_init(QVR_K_SIGNAL_POINTS / 2, TRUE, TRUE)) {
    return QVR_E_FAILED_TO_ALLOCATE_MEMORY;
  }
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (const QVR_retval_t status = wakeLine(xi_lineId, line); QVR_STATUS_ERROR(status)) {
    return status;
  }
  const uint32_t counter = QVR_G_TEST_SNAPSHOT_COUNT_ADDR(line.narrowLineID);
  TRACE_LOG(QVRLOG_DEBUG, "QVR_G_TEST_SNAPSHOT_COUNT_ADDR = %08X\n", counter);
  if (const QVR_retval_t status = captureSymbol(line.deviceId, counter); QVR_STATUS_ERROR(status)) {
    return status;
  }
  const uint32_t symbol = QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(line.narrowLineID);
  TRACE_LOG(QVRLOG_DEBUG, "QVR_G_GHS_RX_FFT_SYMBOL0_ADDR = %08X\n", symbol);
  if (const QVR_retval_t status = QVR_readmem(line.deviceId, symbol, temp, sizeof temp);
      QVR_STATUS_ERROR(status)) {
    return status;
  }
  convertSymbol();
  std::copy_n(realVector, QVR_K_SIGNAL_WORDS, xo_timeDomainSignal);
  FFT_transform(xo_freqDomainSignal, realVector);
  return QVR_E_STATUS_OK;
}
