// Bits, SNR and active line noise per subcarrier, in the encodings of ITU-T G.997.2.
#include <algorithm>
#include <array>

#include "qvrfast/test_parameter.h"
#include "qvrline/bit_loading.h"
#include "qvrline/line_signals.h"
#include "qvrline/medley_set.h"
#include "qvrline/snr_tables.h"

using namespace gfast;

namespace {

constexpr uint8_t kHighestSnr = G9972_SNR_NO_VALUE - 1;
constexpr uint8_t kHighestNoise = G9972_ALN_NO_VALUE - 1;
constexpr double kLeastSnr = -32;      // dB, encoded as 0
constexpr double kHighestLevel = -33;  // dBm/Hz of noise, encoded as 0
constexpr double kUnit = 0.5;          // dB, step of both encodings

using Levels = std::array<double, QVR_MAX_NUMBER_OF_TONES>;
using LoadingReader = QVR_retval_t (*)(QVR_lineId_t line, QVR_BLT_t bits, BOOL isTx);

struct Snrs {
  Snrs() { std::fill_n(table, QVR_MAX_NUMBER_OF_TONES, kNotRead<QVR_SNR_t>); }
  QVR_SNRTBL_t table;
};

// The subcarriers from first up to, but not including, end. Their tables begin with subcarrier first.
struct Tones {
  uint32_t first;
  uint32_t end;
};

Tones processed(const LineInShowtime& line) {
  return {line.tones.firstTone, line.tones.firstTone + line.tones.numProcessedTones};
}

QVR_retval_t getBits(QVR_lineId_t lineId, Direction direction, LoadingReader read, G9972_BITSps_t bits) {
  const bool networkSide = QVR_lineDescriptorForLine(lineId).isDPsideLink == TRUE;
  const bool isTx = networkSide == (direction == Direction::kDownstream);
  QVR_BLT_t table;
  std::copy_n(bits, QVR_MAX_NUMBER_OF_TONES, table);  // what is not read stays as it was
  const QVR_retval_t status = read(lineId, table, isTx ? TRUE : FALSE);
  if (QVR_STATUS_OK(status)) {
    std::transform(table, table + QVR_MAX_NUMBER_OF_TONES, bits,
                   [](int32_t value) { return static_cast<uint8_t>(value); });
  }
  return status;
}

// Rounds to whole decibels first, so all codes are even.
uint8_t encodeSnr(double snr) {
  return encode<uint8_t>(std::round(snr - kLeastSnr) / kUnit, 0, kHighestSnr, G9972_SNR_NO_VALUE);
}

uint8_t encodeNoise(double level) {
  return encode<uint8_t>(std::round(level - kHighestLevel) / -kUnit, 0, kHighestNoise, G9972_ALN_NO_VALUE);
}

QVR_retval_t getSnr(QVR_lineId_t lineId, Direction direction, G9972_SNRps_t snr) {
  LineInShowtime line{};
  QVR_retval_t status = findLineInShowtime(lineId, &line);
  Snrs measured;
  if (QVR_STATUS_OK(status)) {
    status = readSnr(line, receiverOf(line, direction), measured.table);
  }
  MedleySet set;
  if (QVR_STATUS_OK(status)) {
    const bool isUpstream = direction == Direction::kUpstream || line.descriptor.isDPsideLink == FALSE;
    status = readMedleySet(line.descriptor, isUpstream, &set);
  }
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  // The downstream table begins with the set's lowest subcarrier, the upstream table with the first processed
  // one.
  const Tones tones =
      direction == Direction::kUpstream ? processed(line) : Tones{set.lowest, set.lowest + set.span()};
  std::fill_n(snr, QVR_MAX_NUMBER_OF_TONES, G9972_SNR_NO_VALUE);
  for (uint32_t k = tones.first; k < tones.end; k++) {
    if (set.contains[k] == TRUE) {
      snr[k] = encodeSnr(measured.table[k - tones.first]);
    }
  }
  return QVR_E_STATUS_OK;
}

// The noise is the received level minus the SNR.
QVR_retval_t getNoise(QVR_lineId_t lineId, Direction direction, G9972_ALNps_t noise) {
  LineInShowtime line{};
  QVR_retval_t status = findLineInShowtime(lineId, &line);
  Levels received;
  const LineEnd receiver = receiverOf(line, direction);
  if (QVR_STATUS_OK(status)) {
    status = readReceived(line, receiver, nullptr, received.data(), nullptr);
  }
  Snrs measured;
  if (QVR_STATUS_OK(status)) {
    status = readSnr(line, receiver, measured.table);
  }
  MedleySet set;
  if (QVR_STATUS_OK(status)) {
    status = readMedleySet(line.descriptor, false, &set);
  }
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  std::fill_n(noise, QVR_MAX_NUMBER_OF_TONES, G9972_ALN_NO_VALUE);
  const Tones tones = processed(line);
  for (uint32_t k = tones.first; k < tones.end; k++) {
    if (set.contains[k] == TRUE) {
      const uint32_t entry = k - tones.first;
      noise[k] = encodeNoise(static_cast<float>(received[entry] - measured.table[entry]));
    }
  }
  return QVR_E_STATUS_OK;
}

}  // namespace

QVR_retval_t QVR_getLineStatusBITSpsds(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits) {
  return getBits(xi_lineId, Direction::kDownstream, QVR_readBitLoadingTable, xo_bits);
}

QVR_retval_t QVR_getLineStatusBITSpsus(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits) {
  return getBits(xi_lineId, Direction::kUpstream, QVR_readBitLoadingTable, xo_bits);
}

QVR_retval_t QVR_getLineStatusBITSRMCpsds(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits) {
  return getBits(xi_lineId, Direction::kDownstream, QVR_readRMCBitLoadingTable, xo_bits);
}

QVR_retval_t QVR_getLineStatusBITSRMCpsus(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits) {
  return getBits(xi_lineId, Direction::kUpstream, QVR_readRMCBitLoadingTable, xo_bits);
}

QVR_retval_t QVR_getLineStatusSNRpsds(QVR_lineId_t xi_lineId, G9972_SNRps_t xo_snr) {
  return getSnr(xi_lineId, Direction::kDownstream, xo_snr);
}

QVR_retval_t QVR_getLineStatusSNRpsus(QVR_lineId_t xi_lineId, G9972_SNRps_t xo_snr) {
  return getSnr(xi_lineId, Direction::kUpstream, xo_snr);
}

QVR_retval_t QVR_getLineStatusALNpsds(QVR_lineId_t xi_lineId, G9972_ALNps_t xo_noise) {
  return getNoise(xi_lineId, Direction::kDownstream, xo_noise);
}

QVR_retval_t QVR_getLineStatusALNpsus(QVR_lineId_t xi_lineId, G9972_ALNps_t xo_noise) {
  return getNoise(xi_lineId, Direction::kUpstream, xo_noise);
}
