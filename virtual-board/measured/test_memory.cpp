#include "virtual-board/measured/test_memory.h"

#include <algorithm>

#include "chip/test_memory.h"
#include "std/byte_order.h"
#include "virtual-board/base/decibels.h"
#include "virtual-board/base/line_framing.h"
#include "virtual-board/line/cable.h"

namespace gfast::board {

namespace {

constexpr size_t kSampleSize = sizeof(int16_t);
constexpr size_t kPoints = QVR_K_TEST_SYMBOL_SIZE / kSampleSize;
static_assert(kPoints * kSubcarrierSpacing_hz == kSampleRate_hz);
// From a request until the symbol is captured.
constexpr double kCaptureTime_s = 0.03;
// How much a chip's own signal is weakened by the hybrid, at every frequency.
constexpr double kHybridLoss_db = 20;

uint32_t frontEndSeed(uint32_t boardSeed, uint32_t end) {
  return boardSeed * 2654435761U + end;
}

}  // namespace

TestMemory::TestMemory(const std::array<Chip*, kEnds>& chips, const CopperLine& line, Agenda& agenda,
                       const LoopConfig& loop, uint32_t seed)
    : ends_{{{chips[0], FrontEnd(chips[0]->distortion_db(), frontEndSeed(seed, 0)), {}, {}},
             {chips[1], FrontEnd(chips[1]->distortion_db(), frontEndSeed(seed, 1)), {}, {}}}},
      line_(line),
      agenda_(agenda),
      loop_(loop) {
  for (size_t end = 0; end < ends_.size(); end++) {
    forget(end);
    map(end);
    ends_[end].chip->atReset([this, end] { forget(end); });
  }
}

void TestMemory::map(size_t end) {
  End& self = ends_[end];
  AddressSpace& memory = self.chip->memory();
  memory.add({QVR_G_GHS_TX_BUFF0_ADDR(0),
              QVR_K_TEST_SYMBOL_SIZE,
              [&self] { return self.transmit; },
              [this, end](const Bytes& symbol) {
                if (ends_[end].chip->stage() == Stage::kApp) {
                  ends_[end].transmit = symbol;
                  transmitter_ = end;
                }
              },
              {}});
  memory.add({QVR_G_TEST_SNAPSHOT_COUNT_ADDR(0),
              4,
              [&self] {
                Bytes word(4);
                store_le32(word.data(), self.requested);
                return word;
              },
              [this, end](const Bytes& word) { request(end, load_le32(word.data())); },
              {}});
  memory.add(
      {QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(0), QVR_K_TEST_SYMBOL_SIZE, [&self] { return self.captured; }, {}, {}});
}

void TestMemory::forget(size_t end) {
  End& self = ends_[end];
  self.transmit.assign(QVR_K_TEST_SYMBOL_SIZE, 0);
  self.captured.assign(QVR_K_TEST_SYMBOL_SIZE, 0);
  request(end, 0);
  if (transmitter_ == end) {
    transmitter_.reset();
  }
}

// A count other than 0 asks for one symbol.
void TestMemory::request(size_t end, uint32_t count) {
  End& self = ends_[end];
  agenda_.cancel(self.due);
  self.requested = 0;
  if (count != 0 && self.chip->stage() == Stage::kApp) {
    self.requested = count;
    self.due = agenda_.after(kCaptureTime_s, [this, end] { capture(end); });
  }
}

void TestMemory::capture(size_t end) {
  End& self = ends_[end];
  self.due = Agenda::kNone;
  if (!active(end)) {
    return;
  }
  const std::vector<int16_t> samples =
      self.frontEnd.receive(arriving(end), loop_.noise_dbm_hz, receiverOf(self.chip->networkSide()));
  for (size_t i = 0; i < samples.size(); i++) {
    store_le16(&self.captured[kSampleSize * i], static_cast<uint16_t>(samples[i]));
  }
  self.requested = 0;
}

// The front end of an idle line is off.
bool TestMemory::active(size_t end) const {
  const Chip& chip = *ends_[end].chip;
  return chip.running() && chip.stage() == Stage::kApp && chip.lineState() != LineState::kIdle;
}

std::vector<double> TestMemory::arriving(size_t end) {
  const bool own = transmitter_ == end;
  if (!transmitter_ || !active(*transmitter_) || (!own && line_.cut())) {
    return std::vector<double>(kPoints);
  }
  const End& sender = ends_[*transmitter_];
  std::vector<int16_t> samples(kPoints);
  for (size_t i = 0; i < samples.size(); i++) {
    samples[i] = static_cast<int16_t>(load_le16(&sender.transmit[kSampleSize * i]));
  }
  std::vector<double> signal = sender.frontEnd.send(samples);
  if (!own) {
    return throughLoop(signal);
  }
  const double echo = amplitudeRatio(-kHybridLoss_db);
  std::transform(signal.begin(), signal.end(), signal.begin(), [echo](double x) { return echo * x; });
  return signal;
}

// The symbol is sent again and again, so the result is its circular convolution with the loop's response.
std::vector<double> TestMemory::throughLoop(const std::vector<double>& signal) {
  constexpr size_t half = kPoints / 2;
  if (response_.empty() || !(measured_ == line_.cable())) {
    measured_ = line_.cable();
    // The transformers block both ends of the band.
    response_.assign(half, 0);
    for (size_t k = 1; k < half; k++) {
      response_[k] = measured_->insertionGain(static_cast<double>(k) * kSubcarrierSpacing_hz);
    }
  }
  Spectrum spectrum = spectrumOf(signal);
  spectrum[0] = 0;
  spectrum[half] = 0;
  for (size_t k = 1; k < half; k++) {
    spectrum[k] *= response_[k];
    spectrum[kPoints - k] = std::conj(spectrum[k]);
  }
  return samplesOf(spectrum);
}

}  // namespace gfast::board
