// How much a line attenuates its signal: HLOG per subcarrier and the signal attenuation of a direction (ITU-T
// G.997.2).
#include <algorithm>
#include <array>

#include "chip/tones.h"
#include "qvrfast/test_parameter.h"
#include "qvrline/line_signals.h"
#include "qvrline/medley_set.h"
#include "qvrline/phy_params.h"
#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

constexpr double kGreatestGain = 6.0;  // dB, encoded as 0
constexpr double kUnit = 0.1;          // dB, step of both encodings

using Levels = std::array<double, QVR_MAX_NUMBER_OF_TONES>;
using Encoding = std::numeric_limits<int16_t>;

// Rounds to whole decibels first, so every code is a multiple of 10. G9972_HLOG_NO_VALUE is not.
int16_t encodeHlog(double received, double sent) {
  const double gain = received - sent - QVR_K_LINE_DRIVER_GAIN_DB - kGreatestGain;
  return encode<int16_t>(std::round(gain) / -kUnit, Encoding::min(), Encoding::max(), G9972_HLOG_NO_VALUE);
}

QVR_retval_t encodeHlogs(const LineInShowtime& line, const double* sent, const double* received,
                         G9972_HLOGps_t hlog) {
  MedleySet set;
  if (const QVR_retval_t status = readMedleySet(line.descriptor, true, &set); QVR_STATUS_ERROR(status)) {
    return status;
  }
  std::fill_n(hlog, QVR_MAX_NUMBER_OF_TONES, G9972_HLOG_NO_VALUE);
  for (uint32_t entry = 0; entry < line.tones.numProcessedTones; entry++) {
    const uint32_t k = line.tones.firstTone + entry;
    if (set.contains[k] == TRUE) {
      hlog[k] = encodeHlog(received[entry], sent[entry]);
    }
  }
  return QVR_E_STATUS_OK;
}

// Also returns the line as it was found, because SATN goes on with it.
QVR_retval_t getHlog(QVR_lineId_t lineId, Direction direction, LineInShowtime* line, G9972_HLOGps_t hlog) {
  QVR_retval_t status = findLineInShowtime(lineId, line);
  Levels sent;
  if (QVR_STATUS_OK(status)) {
    status = readSent(*line, senderOf(*line, direction), sent.data());
  }
  if (QVR_STATUS_ERROR(status)) {
    TRACE_LOG(QVRLOG_ERR, "Failed reading TX signal (%d)\n", status);
    return status;
  }
  Levels received;
  status = readReceived(*line, receiverOf(*line, direction), nullptr, received.data(), nullptr);
  if (QVR_STATUS_ERROR(status)) {
    TRACE_LOG(QVRLOG_ERR, "Failed reading RX signal (%d)\n", status);
    return status;
  }
  return encodeHlogs(*line, sent.data(), received.data(), hlog);
}

QVR_retval_t getHlog(QVR_lineId_t lineId, Direction direction, G9972_HLOGps_t hlog) {
  LineInShowtime line{};
  return getHlog(lineId, direction, &line, hlog);
}

// The ratio of the power sent to the power received, over all subcarriers of which both are known.
QVR_retval_t encodeAttenuation(const LineInShowtime& line, const int16_t* hlog, const double* amplitudes,
                               G9972_SATN_t* attenuation) {
  double sent = 0;
  double received = 0;
  for (uint32_t entry = 0; entry < line.tones.numProcessedTones; entry++) {
    const int16_t value = hlog[line.tones.firstTone + entry];
    const double amplitude = amplitudes[entry];
    if (value == G9972_HLOG_NO_VALUE || amplitude == 0) {
      continue;
    }
    const double power = std::pow(10.0, (value * -kUnit + kGreatestGain) / 10.0);
    sent += amplitude * amplitude;
    received += amplitude * amplitude * power;
  }
  if (sent == 0) {
    return QVR_E_DATA_NOT_AVAILABLE;
  }
  const double value = std::round(10.0 * std::log10(sent / received) / kUnit);
  *attenuation = encode<G9972_SATN_t>(value, Encoding::min(), Encoding::max(), Encoding::max());
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_getSignalAttenuation(QVR_lineId_t lineId, Direction direction, G9972_SATN_t* attenuation) {
  LineInShowtime line{};
  G9972_HLOGps_t hlog;
  QVR_retval_t status = getHlog(lineId, direction, &line, hlog);
  if (QVR_STATUS_ERROR(status)) {
    TRACE_LOG(QVRLOG_ERR, "Failed reading HLOG (%1d)\n", status);
    return status;
  }
  // The far end's amplitudes serve both directions: both chips shape their spectra alike.
  Levels amplitudes;
  status = readSentAmplitude(line, LineEnd::kFar, amplitudes.data());
  if (QVR_STATUS_ERROR(status)) {
    TRACE_LOG(QVRLOG_ERR, "Failed reading far-end TX Signal (%1d)\n", status);
    return status;
  }
  return encodeAttenuation(line, hlog, amplitudes.data(), attenuation);
}

}  // namespace

QVR_retval_t QVR_getLineStatusHLOGps(QVR_lineId_t xi_lineId, const double* xi_sent, const double* xi_received,
                                     G9972_HLOGps_t xo_hlog) {
  const QVR_lineDescriptor_t descriptor = QVR_lineDescriptorForLine(xi_lineId);
  return encodeHlogs({xi_lineId, descriptor, withinGrid(descriptor.phyParams)}, xi_sent, xi_received,
                     xo_hlog);
}

QVR_retval_t QVR_getLineStatusHLOGpsds(QVR_lineId_t xi_lineId, G9972_HLOGps_t xo_hlog) {
  return getHlog(xi_lineId, Direction::kDownstream, xo_hlog);
}

QVR_retval_t QVR_getLineStatusHLOGpsus(QVR_lineId_t xi_lineId, G9972_HLOGps_t xo_hlog) {
  return getHlog(xi_lineId, Direction::kUpstream, xo_hlog);
}

QVR_retval_t QVR_getSignalAttenuationds(QVR_lineId_t xi_lineId, G9972_SATN_t* xo_attenuation) {
  return QVR_getSignalAttenuation(xi_lineId, Direction::kDownstream, xo_attenuation);
}

QVR_retval_t QVR_getSignalAttenuationus(QVR_lineId_t xi_lineId, G9972_SATN_t* xo_attenuation) {
  return QVR_getSignalAttenuation(xi_lineId, Direction::kUpstream, xo_attenuation);
}
