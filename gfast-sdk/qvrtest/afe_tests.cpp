// Loop-back measurements of the analogue front end: one line sends, another or the same one captures.
#include <qvr.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "clock/waiting.h"

using namespace gfast;

namespace {

using namespace std::chrono_literals;

constexpr auto kSettlingTime = 50ms;  // from the signal's start to the capture

constexpr uint32_t kFirstNotch = 60;
constexpr uint32_t kNotchSpacing = 20;

// The pattern is fixed, so these ends of its band are ignored.
constexpr uint32_t kStartTone = 43;
constexpr uint32_t kEndTone = 1971;

QVR_signal_t tdSignal;
QVR_signal_t fdSignal;
QVR_signal_t accumulator;  // powers of the captures of a loop, summed
QVR_txSignal_t generatedSignal;

double powerOf(const QVR_complex_t& x) {
  const double magnitude = std::abs(x);
  return magnitude * magnitude;
}

// The subcarrier of entry i of a QVR_MTPR_t.
uint32_t notchedTone(uint32_t i) {
  return kNotchSpacing * i + kFirstNotch;
}

QVR_retval_t captureGenerated(QVR_lineId_t txLineId, QVR_lineId_t rxLineId, double* ratios) {
  const QVR_retval_t status =
      QVR_generateRandomTxSignal(kStartTone, kEndTone, QVR_K_SIGNAL_WORDS, generatedSignal);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  return QVR_testAfePerformanceMTPR(txLineId, rxLineId, generatedSignal, fdSignal, ratios);
}

// The ratios of the summed powers, in dB.
void writeLoopRatios(double* ratios) {
  for (QVR_complex_t& power : accumulator) {
    power = 10 * std::log10(power.real());
  }
  for (uint32_t i = 0; i < QVR_K_MTPR_TONES; i++) {
    const uint32_t notch = notchedTone(i);
    ratios[i] =
        0.5 * (accumulator[notch - 1].real() + accumulator[notch + 1].real()) - accumulator[notch].real();
  }
}

}  // namespace

QVR_retval_t QVR_testAfeTxRxPath(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                 const uint32_t* xi_txSignal, QVR_complex_t* xo_rxFreqDomainSignal) {
  const QVR_retval_t status = QVR_startSignalTransmission(xi_txLineId, xi_txSignal);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  if (!waitWhileAllowed(kSettlingTime)) {
    return QVR_E_TIMEOUT_ERROR;
  }
  return QVR_receiveSignalSnapshot(xi_rxLineId, tdSignal, xo_rxFreqDomainSignal);
}

void QVR_calcMTPR(const QVR_complex_t* xi_rxFreqDomainSignal, double* xo_MTPR) {
  for (uint32_t i = 0; i < QVR_K_MTPR_TONES; i++) {
    const QVR_complex_t* notch = xi_rxFreqDomainSignal + notchedTone(i);
    const QVR_complex_t neighbours = 0.5 * (powerOf(notch[-1]) + powerOf(notch[1]));
    // A complex division: for an empty notch it gives infinity or NaN, as a real division would.
    xo_MTPR[i] = (neighbours / QVR_complex_t(powerOf(notch[0]))).real();
  }
}

QVR_retval_t QVR_testAfePerformanceMTPR(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                        const uint32_t* xi_txSignal, QVR_complex_t* xo_rxFreqDomainSignal,
                                        double* xo_MTPR) {
  const QVR_retval_t status =
      QVR_testAfeTxRxPath(xi_txLineId, xi_rxLineId, xi_txSignal, xo_rxFreqDomainSignal);
  if (QVR_STATUS_OK(status)) {
    QVR_calcMTPR(xo_rxFreqDomainSignal, xo_MTPR);
  }
  return status;
}

QVR_retval_t QVR_testAfePerformanceMTPRInLoop(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                              int xi_numberOfIterations, QVR_complex_t* xo_rxFreqDomainSignal,
                                              double* xo_MTPR) {
  QVR_retval_t status = QVR_E_STATUS_OK;
  std::fill(std::begin(accumulator), std::end(accumulator), 0);
  for (int j = 0; j < xi_numberOfIterations; j++) {
    if (!mayGoOn()) {
      return QVR_E_TIMEOUT_ERROR;
    }
    std::printf("%1d\n", j);
    std::fflush(stdout);  // an iteration takes long
    status = captureGenerated(xi_txLineId, xi_rxLineId, xo_MTPR);
    for (uint32_t k = 0; k < QVR_K_SIGNAL_POINTS; k++) {
      accumulator[k] += powerOf(fdSignal[k]);
    }
  }
  std::copy(std::begin(accumulator), std::end(accumulator), xo_rxFreqDomainSignal);
  writeLoopRatios(xo_MTPR);
  return status;
}
