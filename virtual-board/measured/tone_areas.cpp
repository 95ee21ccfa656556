#include "virtual-board/measured/tone_areas.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

#include "chip/far_end_messages.h"
#include "chip/tones.h"
#include "std/byte_order.h"
#include "virtual-board/base/decibels.h"
#include "virtual-board/measured/vector_coefficients.h"

namespace gfast::board {

namespace {

constexpr uint32_t kWord = 4;
constexpr uint32_t kHalf = 2;
constexpr uint32_t kGuard = 2 * kWord;

constexpr uint32_t kMedleyBands = 32;

// The gain control brings the received signal to this level, within its range.
constexpr double kConverterLevel_dbm = 6;
constexpr double kMostGain_db = 63;
// From this gain on, the analogue canceller of echo is on.
constexpr double kAceFrom_db = 18;

constexpr double kFeqFull = 1 << 14;  // the larger part of a mantissa is between this and twice as much

int16_t rounded16(double value) {
  using Limits = std::numeric_limits<int16_t>;
  return static_cast<int16_t>(
      std::lround(std::clamp<double>(value, Limits::min() + 1, static_cast<double>(Limits::max()))));
}

void storeSigned(uint8_t* bytes, int16_t value) {
  store_le16(bytes, static_cast<uint16_t>(value));
}

// ---- Sets and bit loading ----

// The entries are the bands, then the two counts.
void storeMedley(const DirectionPlan& plan, uint32_t entry, uint8_t* bytes) {
  if (entry < plan.bands.size()) {
    store_le16(bytes, plan.bands[entry].first);
    store_le16(bytes + kHalf, plan.bands[entry].last);
  } else if (entry == kMedleyBands) {
    store_le16(bytes, static_cast<uint16_t>(plan.bands.size()));
    store_le16(bytes + kHalf, static_cast<uint16_t>(plan.medley.count()));
  }
}

void storeTxMedley(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeMedley(line.sendPlan(), entry, bytes);
}
void storeRxMedley(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeMedley(line.receivePlan(), entry, bytes);
}

uint16_t loaded(uint32_t tone, uint32_t bits) {
  return static_cast<uint16_t>(tone << QVR_BLT_TONE_INDEX_OFFSET | bits);
}

void storeLoading(const DirectionPlan& plan, const DirectionBudget& direction, uint32_t entry,
                  uint8_t* bytes) {
  const uint32_t tone = plan.bands.front().first + entry;
  if (tone <= plan.bands.back().last) {
    const uint32_t bits = plan.pilots.test(tone) ? QVR_PILOT_BL : direction.loading->bits[tone];
    store_le16(bytes, loaded(tone, bits));
  }
}

void storeTxLoading(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeLoading(line.sendPlan(), line.sends(), entry, bytes);
}
void storeRxLoading(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeLoading(line.receivePlan(), line.receives(), entry, bytes);
}

// Each training and each adaptation of the RMC writes a new table.
uint32_t rmcIndex(const LineInsight& line, const StreamCounts& stream) {
  const EndCounts& near = line.view.near;
  const uint64_t trainings = near.initialisations - near.failedInitialisations;
  return static_cast<uint32_t>(trainings + stream.rmcParameterAdaptations);
}

uint32_t txRmcIndex(const LineInsight& line) {
  return rmcIndex(line, line.view.near.sent);
}
uint32_t rxRmcIndex(const LineInsight& line) {
  return rmcIndex(line, line.view.near.received);
}

void storeTxRmcIndex(const LineInsight& line, uint32_t /*entry*/, uint8_t* bytes) {
  store_le32(bytes, txRmcIndex(line));
}
void storeRxRmcIndex(const LineInsight& line, uint32_t /*entry*/, uint8_t* bytes) {
  store_le32(bytes, rxRmcIndex(line));
}

// The table in the area that is not in use is empty.
void storeRmc(const DirectionBudget& direction, bool inUse, uint32_t entry, uint8_t* bytes) {
  const ToneLoading& loading = *direction.loading;
  const size_t count = inUse ? loading.rmcTones.size() : 0;
  if (entry < count) {
    const uint16_t tone = loading.rmcTones[entry];
    store_le16(bytes, loaded(tone, loading.rmcBits[tone]));
  } else if (entry == count) {
    store_le16(bytes, LAST_RMC_TONE_STAMP);
  }
}

template <uint32_t area>
void storeTxRmc(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeRmc(line.sends(), txRmcIndex(line) % 2 == area, entry, bytes);
}
template <uint32_t area>
void storeRxRmc(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeRmc(line.receives(), rxRmcIndex(line) % 2 == area, entry, bytes);
}

// ---- Measurements of the receiver ----

void storeNoiseEnergy(const LineInsight& line, uint32_t tone, uint8_t* bytes) {
  const LineSpectrum& spectrum = *line.receives().spectrum;
  const double snr = tone < kTones ? spectrum.snr[tone] : 0;
  const double most = std::numeric_limits<uint32_t>::max();
  const double energy = kSnrWindow * std::exp2(spectrum.snrScale) / (1 + snr);
  store_le32(bytes, static_cast<uint32_t>(std::clamp(std::round(energy), 1.0, most)));
}

double rxGain_db(const LineInsight& line) {
  return std::clamp(std::round(kConverterLevel_dbm - line.receives().powerReceived / 10.0), 0.0,
                    kMostGain_db);
}
bool aceOn(double gain_db) {
  return gain_db >= kAceFrom_db;
}

// The loss of the receive path before the equaliser, in dB: little at the bottom of the band, more towards
// its upper end, and more with the analogue canceller in the path. A parabola over frequency / 106 MHz, and
// the constant between line and converter.
struct ReceivePath {
  double converter_db;
  double bottom_db;
  double tilt_db;
  double rollOff_db;
};
constexpr ReceivePath kPathWithCanceller{-55.47, 1.10, -0.40, 3.60};
constexpr ReceivePath kPathWithoutCanceller{-35.72, 0.25, -0.15, 2.30};
constexpr double kBandEdge_hz = 106e6;

constexpr double receivePath_db(const ReceivePath& path, uint32_t tone) {
  const double share = tone * kSubcarrierSpacing_hz / kBandEdge_hz;
  return path.bottom_db + share * (path.tilt_db + share * path.rollOff_db) + path.converter_db;
}

struct FeqCoefficient {
  std::complex<double> mantissa;
  int exponent;
};

// The inverse of what the equaliser receives.
FeqCoefficient feqCoefficient(const LineInsight& line, uint32_t entry) {
  const LineSpectrum& spectrum = *line.receives().spectrum;
  const uint32_t tone = kFirstTone + entry;
  const double gain_db = rxGain_db(line);
  const double path_db = receivePath_db(aceOn(gain_db) ? kPathWithCanceller : kPathWithoutCanceller, tone);
  const double power_db = path_db - gain_db - spectrum.received_dbm_hz[tone];
  // Without angles, which would take most of the time.
  const std::complex<double>& gain = spectrum.gain[tone];
  const std::complex<double> turn = spectrum.snr[tone] > 0 ? std::conj(gain) / std::sqrt(std::norm(gain)) : 1;
  // The inverse of a very weak signal would not fit an exponent.
  constexpr double most_db = 700;
  const auto value = amplitudeRatio(std::min(power_db, most_db)) / QVR_K_RX_FEQ_UNIT * turn;
  const double larger = std::max(std::abs(value.real()), std::abs(value.imag()));
  const int exponent = std::clamp(std::ilogb(larger / kFeqFull), -128, 127);
  return {value * std::ldexp(1.0, -exponent), exponent};
}

void storeFeqMantissa(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  const FeqCoefficient feq = feqCoefficient(line, entry);
  storeSigned(bytes, rounded16(feq.mantissa.real()));
  storeSigned(bytes + kHalf, rounded16(feq.mantissa.imag()));
}

void storeFeqExponent(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  *bytes = static_cast<uint8_t>(feqCoefficient(line, entry).exponent);
}

void storeRxGain(const LineInsight& line, uint32_t /*entry*/, uint8_t* bytes) {
  store_le32(bytes, static_cast<uint32_t>(rxGain_db(line)));
}

void storeAceMode(const LineInsight& line, uint32_t /*entry*/, uint8_t* bytes) {
  store_le32(bytes, aceOn(rxGain_db(line)) ? 1 : 0);
}

// ---- The transmitter ----

void storeTxSignal(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  const DirectionPlan& plan = line.sendPlan();
  const uint32_t tone = kFirstTone + entry;
  const double level = plan.sent_dbm_hz[tone] - QVR_K_LINE_DRIVER_GAIN_DB;
  storeSigned(bytes,
              plan.medley.test(tone) ? rounded16(level / QVR_K_TX_SIGNAL_UNIT_DB) : QVR_K_TX_SIGNAL_OFF);
}

// The strongest subcarrier has an amplitude of 1.
void storeTxFeq(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  const DirectionPlan& plan = line.sendPlan();
  const uint32_t tone = kFirstTone + entry;
  if (plan.medley.test(tone)) {
    const double below_db = plan.sent_dbm_hz[tone] - plan.highest_dbm_hz;
    store_le16(bytes, static_cast<uint16_t>(std::lround(amplitudeRatio(below_db) / QVR_K_TX_FEQ_UNIT)));
  }
}

// ---- Vectoring ----

void storeVector(const LineInsight& line, VectorMatrix matrix, uint32_t entry, uint8_t* bytes) {
  const uint32_t pair = entry % QVR_K_MAX_TONE_PAIRS;
  const uint32_t i = entry / QVR_K_MAX_TONE_PAIRS / kVectorUsers;
  const uint32_t j = entry / QVR_K_MAX_TONE_PAIRS % kVectorUsers;
  std::complex<double> value = i == j ? 1 : 0;
  if (line.loop.plan->vectoring) {
    const double frequency_hz = (kFirstTone + 2 * pair) * kSubcarrierSpacing_hz;
    value = vectorCoefficient({line.loop.binderSeed, line.loop.length_m}, matrix, i, j, frequency_hz);
  }
  storeSigned(bytes, rounded16(value.real() / QVR_K_VEC_COEFF_UNIT));
  storeSigned(bytes + kHalf, rounded16(value.imag() / QVR_K_VEC_COEFF_UNIT));
}

void storeCanceller(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeVector(line, VectorMatrix::kCanceller, entry, bytes);
}
void storePrecoder(const LineInsight& line, uint32_t entry, uint8_t* bytes) {
  storeVector(line, VectorMatrix::kPrecoder, entry, bytes);
}

constexpr uint32_t kEnergiesSize = kWord * kTones;
constexpr uint32_t kMatrixSize = kVectorUsers * kVectorUsers * QVR_K_MAX_TONE_PAIRS * kWord;
static_assert(kMatrixSize == VIRT_ADDR_RX_FEQ_MAN(0) - VIRT_ADDR_RX_VEC_COEFFS(0));

using Kind = ToneArea::Kind;
constexpr ToneArea kAreas[] = {
    {VIRT_ADDR_MEDLEY_SET_DS(0), (kMedleyBands + 1) * kWord, kWord, Kind::kTable, storeRxMedley},
    {VIRT_ADDR_MEDLEY_SET_US(0), (kMedleyBands + 1) * kWord, kWord, Kind::kTable, storeTxMedley},
    {VIRT_ADDR_TX_BLT(0), kTones* kHalf, kHalf, Kind::kTable, storeTxLoading},
    {VIRT_ADDR_RX_BLT(0), kTones* kHalf, kHalf, Kind::kTable, storeRxLoading},
    {VIRT_ADDR_TX_RMC_BLT_INDEX(0), kWord, kWord, Kind::kTable, storeTxRmcIndex},
    {VIRT_ADDR_RX_RMC_BLT_INDEX(0), kWord, kWord, Kind::kTable, storeRxRmcIndex},
    {VIRT_ADDR_TX_RMC_BLT(0, 0), QVR_K_RMC_BLT_SIZE, kHalf, Kind::kTable, storeTxRmc<0>},
    {VIRT_ADDR_TX_RMC_BLT(0, 1), QVR_K_RMC_BLT_SIZE, kHalf, Kind::kTable, storeTxRmc<1>},
    {VIRT_ADDR_RX_RMC_BLT(0, 0), QVR_K_RMC_BLT_SIZE, kHalf, Kind::kTable, storeRxRmc<0>},
    {VIRT_ADDR_RX_RMC_BLT(0, 1), QVR_K_RMC_BLT_SIZE, kHalf, Kind::kTable, storeRxRmc<1>},
    {VIRT_ADDR_SNR_BUF(0), kEnergiesSize, kWord, Kind::kWindow, storeNoiseEnergy},
    {VIRT_ADDR_RX_FEQ_MAN(0), kProcessedTones* kWord, kWord, Kind::kTable, storeFeqMantissa},
    {VIRT_ADDR_RX_FEQ_EXP(0), kProcessedTones, 1, Kind::kTable, storeFeqExponent},
    {VIRT_ADDR_RX_GAIN(0), kWord, kWord, Kind::kTable, storeRxGain},
    {VIRT_ADDR_RX_ACE_MODE(0), kWord, kWord, Kind::kTable, storeAceMode},
    {VIRT_ADDR_TX_SIGNAL(0), kProcessedTones* kHalf, kHalf, Kind::kTable, storeTxSignal},
    {VIRT_ADDR_TX_FEQ(0), kProcessedTones* kHalf, kHalf, Kind::kTable, storeTxFeq},
    {VIRT_ADDR_RX_VEC_COEFFS(0), kMatrixSize, kWord, Kind::kWindow, storeCanceller},
    {VIRT_ADDR_TX_VEC_COEFFS(0), kMatrixSize, kWord, Kind::kWindow, storePrecoder},
};

// ---- Vectors of test parameters ----

// In half decibels above -32 dB.
uint8_t snrByte(const LineInsight& line, uint32_t tone) {
  if (!line.everTrained() || !line.receivePlan().medley.test(tone)) {
    return PMD_VECTOR_NO_VALUE;
  }
  const double snr_db = powerDecibels(1 + line.receives().spectrum->snr[tone]);
  return static_cast<uint8_t>(std::clamp(std::round((snr_db + 32) * 2), 0.0, PMD_VECTOR_NO_VALUE - 1.0));
}

}  // namespace

Bytes ToneArea::read(const LineInsight& line, uint32_t offset, uint32_t partLength) const {
  Bytes part(partLength);
  if (!line.view.showtime || partLength == 0) {
    return part;
  }
  const uint32_t lead = kind == Kind::kWindow ? std::min(kGuard, partLength) : 0;
  if (lead != 0) {
    // Guard words are equal while nothing is written, and never 0.
    uint8_t guard[kGuard];
    store_le32(guard, static_cast<uint32_t>(line.view.near.received.framesArrived) | 1);
    std::copy_n(guard, kWord, guard + kWord);
    std::copy_n(guard, lead, part.begin());
  }
  const uint32_t end = std::min(offset + partLength - lead, length);
  if (offset >= end) {
    return part;
  }
  const uint32_t first = offset / entrySize;
  const uint32_t count = (end + entrySize - 1) / entrySize - first;
  Bytes entries(size_t{count} * entrySize);
  for (uint32_t i = 0; i < count; i++) {
    store(line, first + i, &entries[size_t{i} * entrySize]);
  }
  std::copy_n(entries.begin() + (offset - first * entrySize), end - offset, part.begin() + lead);
  return part;
}

std::span<const ToneArea> toneAreas() {
  return kAreas;
}

Bytes pmdVectorBlock(const LineInsight& line, std::span<const uint8_t> request) {
  Bytes refusal{PMD_VECTOR_NACK};
  if (request.size() != PMD_VECTOR_REQUEST_SIZE ||
      request[PMD_VECTOR_REQUEST_ID] != G9701_PMD_TEST_PARAMS_VECTOR_ID_SNR) {
    return refusal;
  }
  const uint32_t first = load_le16(&request[PMD_VECTOR_REQUEST_FIRST]);
  const uint32_t last = load_le16(&request[PMD_VECTOR_REQUEST_LAST]);
  if (first > last || last >= kTones || last - first >= PMD_VECTOR_MAX_SUBCARRIERS) {
    return refusal;
  }
  Bytes response(PMD_VECTOR_RESPONSE_HEADER_SIZE);
  store_le16(response.data(), kSnrWindow);
  for (uint32_t tone = first; tone <= last; tone++) {
    response.push_back(snrByte(line, tone));
  }
  return response;
}

}  // namespace gfast::board
