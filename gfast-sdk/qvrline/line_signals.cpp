#include "qvrline/line_signals.h"

#include <array>
#include <cmath>
#include <limits>

#include "chip/tones.h"
#include "qvrline/afe_params.h"
#include "qvrline/receive_path.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kValueSize = sizeof(uint16_t);
constexpr uint32_t kMantissaSize = 2 * kValueSize;  // real part, then imaginary part
constexpr double kLeastPower = 1e-20;               // keeps a coefficient of 0 at 200 dB

using Calibration = std::array<double, QVR_MAX_NUMBER_OF_TONES>;

constexpr Calibration calibrationOf(const ReceivePathCurve& path) {
  Calibration table{};
  for (uint32_t tone = 0; tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
    table[tone] = calibration_db(path, tone);
  }
  return table;
}

// What the receive path takes from each subcarrier, dB: with the analogue canceller in the path and without.
constexpr Calibration aceOn = calibrationOf(kReceivePathAceOn);
constexpr Calibration aceOff = calibrationOf(kReceivePathAceOff);

// The equaliser's coefficients as the chip keeps them, and the front end they were measured behind.
struct Equaliser {
  std::array<uint8_t, size_t{QVR_MAX_NUMBER_OF_TONES} * kMantissaSize> mantissas;
  std::array<uint8_t, QVR_MAX_NUMBER_OF_TONES> exponents;
  QVR_AFE_PARAMS_t afe;
};

QVR_retval_t readEqualiser(const LineInShowtime& line, LineEnd end, Equaliser* equaliser) {
  const uint32_t tones = line.tones.numProcessedTones;
  QVR_retval_t status =
      readTones(line, end, VIRT_ADDR_RX_FEQ_MAN, equaliser->mantissas.data(), tones * kMantissaSize);
  if (QVR_STATUS_OK(status)) {
    // Chip memory is read in even lengths only.
    status = readTones(line, end, VIRT_ADDR_RX_FEQ_EXP, equaliser->exponents.data(), tones + tones % 2);
  }
  return QVR_STATUS_OK(status) ? readAfe(line, end, &equaliser->afe) : status;
}

double signedValue(const uint8_t* bytes) {
  return static_cast<int16_t>(load_le16(bytes));
}

// The coefficient's power in dB, of which the received one is the inverse.
double receivedPower(const Equaliser& equaliser, uint32_t entry) {
  const uint8_t* mantissa = &equaliser.mantissas[size_t{entry} * kMantissaSize];
  const double power = std::ldexp(1.0, static_cast<int8_t>(equaliser.exponents[entry]));
  const double re = signedValue(mantissa) * power * QVR_K_RX_FEQ_UNIT;
  const double im = signedValue(mantissa + kValueSize) * power * QVR_K_RX_FEQ_UNIT;
  return -10.0 * std::log10(re * re + im * im + kLeastPower);
}

using SignalReader = QVR_retval_t (*)(const LineInShowtime& line, LineEnd end, double* values);

// One 16-bit word of each processed subcarrier, at the end's address, as the value it stands for.
QVR_retval_t readValues(const LineInShowtime& line, LineEnd end, uint32_t (*addressOf)(uint32_t linkId),
                        double (*valueOf)(const uint8_t* bytes), double* values) {
  std::array<uint8_t, size_t{QVR_MAX_NUMBER_OF_TONES} * kValueSize> bytes;
  const uint32_t tones = line.tones.numProcessedTones;
  const QVR_retval_t status = readTones(line, end, addressOf, bytes.data(), tones * kValueSize);
  for (uint32_t k = 0; QVR_STATUS_OK(status) && k < tones; k++) {
    values[k] = valueOf(&bytes[size_t{k} * kValueSize]);
  }
  return status;
}

double sentLevel(const uint8_t* bytes) {
  const double value = signedValue(bytes);
  return value == QVR_K_TX_SIGNAL_OFF ? std::numeric_limits<double>::quiet_NaN()
                                      : value * QVR_K_TX_SIGNAL_UNIT_DB;
}

double sentAmplitude(const uint8_t* bytes) {
  return load_le16(bytes) * QVR_K_TX_FEQ_UNIT;
}

QVR_retval_t readOfLine(QVR_lineId_t lineId, LineEnd end, SignalReader read, double* values) {
  LineInShowtime line{};
  const QVR_retval_t status = findLineInShowtime(lineId, &line);
  return QVR_STATUS_OK(status) ? read(line, end, values) : status;
}

QVR_retval_t readReceivedOfLine(QVR_lineId_t lineId, LineEnd end, double* feq, double* calibrated,
                                QVR_AFE_PARAMS_t* afe) {
  LineInShowtime line{};
  const QVR_retval_t status = findLineInShowtime(lineId, &line);
  return QVR_STATUS_OK(status) ? readReceived(line, end, feq, calibrated, afe) : status;
}

}  // namespace

QVR_retval_t gfast::readReceived(const LineInShowtime& line, LineEnd end, double* feq, double* calibrated,
                                 QVR_AFE_PARAMS_t* afe) {
  Equaliser equaliser;
  if (const QVR_retval_t status = readEqualiser(line, end, &equaliser); QVR_STATUS_ERROR(status)) {
    return status;
  }
  if (afe != nullptr) {
    *afe = equaliser.afe;
  }
  const bool ace = equaliser.afe.aceOnOff != 0;
  const double factor = ace ? CALIBRATION_FACTOR_ACE_ON : CALIBRATION_FACTOR_ACE_OFF;
  const Calibration& path = ace ? aceOn : aceOff;
  for (uint32_t k = 0; k < line.tones.numProcessedTones; k++) {
    const double power = receivedPower(equaliser, k);
    if (feq != nullptr) {
      feq[k] = power - equaliser.afe.rxGain + factor;
    }
    if (calibrated != nullptr) {
      calibrated[k] = power + path[line.tones.firstTone + k] - equaliser.afe.rxGain + factor;
    }
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t gfast::readSent(const LineInShowtime& line, LineEnd end, double* level) {
  return readValues(line, end, VIRT_ADDR_TX_SIGNAL, sentLevel, level);
}

QVR_retval_t gfast::readSentAmplitude(const LineInShowtime& line, LineEnd end, double* amplitude) {
  return readValues(line, end, VIRT_ADDR_TX_FEQ, sentAmplitude, amplitude);
}

QVR_retval_t QVR_readRxSignal(QVR_lineId_t xi_lineId, double* xo_feq, double* xo_calibrated,
                              QVR_AFE_PARAMS_t* xo_afe) {
  return readReceivedOfLine(xi_lineId, LineEnd::kNear, xo_feq, xo_calibrated, xo_afe);
}

QVR_retval_t QVR_readFarEndRxSignal(QVR_lineId_t xi_lineId, double* xo_feq, double* xo_calibrated,
                                    QVR_AFE_PARAMS_t* xo_afe) {
  return readReceivedOfLine(xi_lineId, LineEnd::kFar, xo_feq, xo_calibrated, xo_afe);
}

QVR_retval_t QVR_readTxSignal(QVR_lineId_t xi_lineId, double* xo_level) {
  return readOfLine(xi_lineId, LineEnd::kNear, readSent, xo_level);
}

QVR_retval_t QVR_readFarEndTxSignal(QVR_lineId_t xi_lineId, double* xo_level) {
  return readOfLine(xi_lineId, LineEnd::kFar, readSent, xo_level);
}

QVR_retval_t QVR_readTxFEQ(QVR_lineId_t xi_lineId, QVR_FEQ_t xo_feq) {
  return readOfLine(xi_lineId, LineEnd::kNear, readSentAmplitude, xo_feq);
}

QVR_retval_t QVR_readFarEndTxFEQ(QVR_lineId_t xi_lineId, QVR_FEQ_t xo_feq) {
  return readOfLine(xi_lineId, LineEnd::kFar, readSentAmplitude, xo_feq);
}
