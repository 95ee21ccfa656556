// The chips' memory by subcarrier, as the host reads it.
#include <gfast_api.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numeric>

#include "chip/counter_records.h"
#include "chip/device_information.h"
#include "chip/parameter_records.h"
#include "chip/registers.h"
#include "chip/tones.h"
#include "unit/virtual-board/measured/counters.h"
#include "virtual-board/base/receiver.h"
#include "virtual-board/chip/parameter_table.h"
#include "virtual-board/line/cable.h"

using namespace gfast;
using namespace gfast::board;

namespace {

using Memory = std::vector<uint8_t>;

// In as many requests as are needed.
Memory readAll(Bench& bench, int device, uint32_t address, size_t length) {
  Memory bytes;
  while (bytes.size() < length) {
    const auto part = static_cast<uint16_t>(std::min<size_t>(length - bytes.size(), 900));
    const Memory read = fromHex(bench.read(device, address + static_cast<uint32_t>(bytes.size()), part));
    bytes.insert(bytes.end(), read.begin(), read.end());
    if (read.size() != part) {
      break;
    }
  }
  bytes.resize(length);
  return bytes;
}

struct Medley {
  std::string bands;  // "43-1971"
  uint32_t subcarriers;
};

Medley medley(Bench& bench, int device, uint32_t address) {
  const Memory set = readAll(bench, device, address, 132);
  Medley medley{"", load_le16(&set[130])};
  for (size_t i = 0; i < load_le16(&set[128]); i++) {
    medley.bands += (i == 0 ? "" : " ") + std::to_string(load_le16(&set[4 * i])) + '-' +
                    std::to_string(load_le16(&set[4 * i + 2]));
  }
  return medley;
}

// Bits by subcarrier: 15 for a pilot, -1 for none.
std::vector<int> bits(Bench& bench, int device, uint32_t address) {
  std::vector<int> table(2048, -1);
  const Memory bytes = readAll(bench, device, address, kProcessedTones * 2);
  for (size_t i = 0; i < bytes.size(); i += 2) {
    const uint16_t entry = load_le16(&bytes[i]);
    table[entry >> 4] = entry & 15;
  }
  return table;
}

std::vector<int> rmcBits(Bench& bench, int device, uint32_t address) {
  std::vector<int> table(2048, -1);
  const Memory bytes = readAll(bench, device, address, QVR_K_RMC_BLT_SIZE);
  for (size_t i = 0; i < bytes.size(); i += 2) {
    const uint16_t entry = load_le16(&bytes[i]);
    if (entry == LAST_RMC_TONE_STAMP) {
      break;
    }
    table[entry >> 4] = entry & 15;
  }
  return table;
}

size_t counted(const std::vector<int>& table, int least, int most) {
  return static_cast<size_t>(
      std::count_if(table.begin(), table.end(), [=](int n) { return n >= least && n <= most; }));
}

// As the host computes it from the window: the whole level over that of the noise. The guard words are
// skipped.
double snr_db(Bench& bench, int device, uint32_t tone) {
  const auto init = bench.block<GFAST_FDU_INIT_COUNTERS_S>(device, kFduInit);
  const Memory window = fromHex(bench.read(device, VIRT_ADDR_SNR_BUF(0) + 4 * tone, 12));
  return 10 * std::log10(init.winSize * std::exp2(init.sseScale) / load_le32(&window[8]));
}

double sent_dbm_hz(Bench& bench, int device, uint32_t tone) {
  const Memory word = fromHex(bench.read(device, VIRT_ADDR_TX_SIGNAL(0) + 2 * (tone - kFirstTone), 2));
  return static_cast<int16_t>(load_le16(word.data())) * QVR_K_TX_SIGNAL_UNIT_DB + QVR_K_LINE_DRIVER_GAIN_DB;
}

std::complex<double> feq(Bench& bench, int device, uint32_t tone) {
  const uint32_t entry = tone - kFirstTone;
  const Memory mantissa = fromHex(bench.read(device, VIRT_ADDR_RX_FEQ_MAN(0) + 4 * entry, 4));
  const Memory exponent = fromHex(bench.read(device, VIRT_ADDR_RX_FEQ_EXP(0) + entry, 1));
  const auto part = [&mantissa](size_t at) { return static_cast<int16_t>(load_le16(&mantissa[at])); };
  return std::complex<double>(part(0), part(2)) * std::exp2(static_cast<int8_t>(exponent[0]) - 12);
}

double received_dbm_hz(Bench& bench, int device, uint32_t tone) {
  const bool ace = (bench.word(device, VIRT_ADDR_RX_ACE_MODE(0)) & 1) != 0;
  const double share = tone * 51750.0 / 106e6;
  return -10 * std::log10(std::norm(feq(bench, device, tone))) +
         (ace ? 1.10 - 0.40 * share + 3.60 * share * share : 0.25 - 0.15 * share + 2.30 * share * share) -
         (bench.word(device, VIRT_ADDR_RX_GAIN(0)) & 63) + (ace ? -55.47 : -35.72);
}

// The signal alone over the noise, as a ratio.
double signalToNoise(Bench& bench, int device, uint32_t tone) {
  return std::pow(10, snr_db(bench, device, tone) / 10) - 1;
}

// What the receiver at that end adds to a background noise.
double heard_dbm_hz(int device, double background_dbm_hz) {
  const Receiver& receiver = receiverOf(device == 0);
  return 10 * std::log10(std::pow(10, background_dbm_hz / 10) + std::pow(10, receiver.noise_dbm_hz / 10));
}

// Upstream ends lower.
uint32_t lastTone(int sender) {
  return sender == 0 ? 1971 : 1959;
}

uint32_t rmcAddress(Bench& bench, int device, bool inUse) {
  return VIRT_ADDR_TX_RMC_BLT(0, bench.word(device, VIRT_ADDR_TX_RMC_BLT_INDEX(0)) % 2 ^ (inUse ? 0 : 1));
}

std::string withParams(int device, const std::string& params) {
  const std::string set = "params = { " + params + " }\n";
  return kShowtime + (device == 0 ? set : "[[device]]\n" + set);
}

constexpr uint32_t kSome[] = {43, 100, 500, 901, 1300, 1700, 1959};

}  // namespace

TEST(Tones, TheMedleySetsAreFrom43To1971AndTo1959) {
  Bench bench(kShowtime);
  for (const int device : {0, 1}) {
    const Medley sent = medley(bench, device, VIRT_ADDR_MEDLEY_SET_US(0));
    EXPECT_EQ(sent.bands, "43-" + std::to_string(lastTone(device)));
    EXPECT_EQ(sent.subcarriers, lastTone(device) - 42);
    EXPECT_EQ(medley(bench, 1 - device, VIRT_ADDR_MEDLEY_SET_DS(0)).bands, sent.bands);
  }
}

TEST(Tones, BothEndsSpareTheBandsOfEither) {
  Bench bench(withParams(1, "RFIBand_0 = 0x00C80064, RFIBand_15 = 0x012C00C8, RFIBand_3 = 0x00640065"));
  for (const int device : {0, 1}) {
    EXPECT_EQ(medley(bench, device, VIRT_ADDR_MEDLEY_SET_US(0)).bands,
              "43-99 301-" + std::to_string(lastTone(device)));
    const auto loading = bits(bench, device, VIRT_ADDR_TX_BLT(0));
    EXPECT_EQ(loading[100], 0);
    EXPECT_EQ(loading[256], 0);
    EXPECT_EQ(loading[301], 15);  // the pilot of 256, moved up
    EXPECT_EQ(loading[302], 12);
    EXPECT_EQ(bench.read(device, VIRT_ADDR_TX_SIGNAL(0) + 2 * (200 - 43), 2), "00 80");
    EXPECT_EQ(bench.read(device, VIRT_ADDR_TX_FEQ(0) + 2 * (200 - 43), 2), "00 00");
    // Only noise is received there.
    EXPECT_NEAR(received_dbm_hz(bench, device, 200), heard_dbm_hz(device, -140), 0.01);
  }
}

TEST(Tones, EachAmateurBandIsSparedByItsBit) {
  Bench bench(withParams(0, "IARBands = 0x202"));
  EXPECT_EQ(medley(bench, 0, VIRT_ADDR_MEDLEY_SET_DS(0)).bands, "43-66 79-965 1045-1959");
}

TEST(Tones, ASetHasRoomForEveryBandThatCanBeSpared) {
  std::string params = "IARBands = 0xFFFFFFFF";
  for (uint32_t i = 0; i < 16; i++) {
    params += ", RFIBand_" + std::to_string(i) + " = " + std::to_string((1100 + 9 * i) * 0x10001U);
  }
  Bench bench(withParams(0, params));
  const std::string bands = medley(bench, 0, VIRT_ADDR_MEDLEY_SET_DS(0)).bands;
  EXPECT_EQ(std::count(bands.begin(), bands.end(), '-'), 27);
}

TEST(Tones, ParametersLowerOrNarrowTheSpectrum) {
  Bench usual(kShowtime);
  Bench lowered(withParams(0, "isFlatDecrease = 1, flatDecrease_1 = 100"));
  Bench capped(withParams(0, "saturation_0 = 900"));
  Bench narrow(withParams(0, "bandStart_0 = 60, bandStart_1 = 1000, bandStart_2 = 0"));
  EXPECT_LT(sent_dbm_hz(lowered, 0, 1000), sent_dbm_hz(usual, 0, 1000) - 5);
  EXPECT_GT(sent_dbm_hz(lowered, 0, 100), sent_dbm_hz(usual, 0, 100));
  EXPECT_LE(sent_dbm_hz(capped, 0, 100), -90);
  EXPECT_EQ(medley(narrow, 0, VIRT_ADDR_MEDLEY_SET_DS(0)).bands, "60-1000");
}

TEST(Tones, AMaskedSubcarrierIsNotSentInItsDirection) {
  Bench bench(std::string("[spectrum]\ncarmask_us = [ { from = 600, to = 700 }, { from = 43, to = 43 } ]\n") +
              kShowtime);
  EXPECT_EQ(medley(bench, 1, VIRT_ADDR_MEDLEY_SET_US(0)).bands, "44-599 701-1959");
  EXPECT_EQ(medley(bench, 0, VIRT_ADDR_MEDLEY_SET_US(0)).bands, "43-1971");
}

TEST(Tones, ASetThatWouldHaveTooManyBandsEndsEarlier) {
  std::string text = "[spectrum]\ncarmask_ds = [ ";
  for (uint32_t i = 0; i < 16; i++) {
    text += "{ from = " + std::to_string(100 + 10 * i) + ", to = " + std::to_string(100 + 10 * i) + " }, ";
  }
  text += " ]\n[[device]]\nline = \"showtime\"\n[device.params]\n";
  for (uint32_t i = 0; i < 16; i++) {
    text += "RFIBand_" + std::to_string(i) + " = " + std::to_string((1100 + 9 * i) * 0x10001U) + '\n';
  }
  Bench bench(text);
  const std::string bands = medley(bench, 0, VIRT_ADDR_MEDLEY_SET_US(0)).bands;
  EXPECT_EQ(std::count(bands.begin(), bands.end(), '-'), 31);
  EXPECT_TRUE(bands.ends_with(" 1218-1225")) << bands;
  EXPECT_TRUE(medley(bench, 1, VIRT_ADDR_MEDLEY_SET_US(0)).bands.ends_with("-1959"));
}

TEST(Tones, LevelsOfAnOperatorAreNotExceeded) {
  Bench bench(std::string("[spectrum]\n"
                          "psdmask_ds = [ { tone = 500, dbm_hz = -80 }, { tone = 1000, dbm_hz = -90 } ]\n") +
              kShowtime);
  EXPECT_NEAR(sent_dbm_hz(bench, 0, 43), -80, 0.01);
  EXPECT_NEAR(sent_dbm_hz(bench, 0, 750), -85, 0.01);
  EXPECT_NEAR(sent_dbm_hz(bench, 0, 1971), -90, 0.01);
  Bench usual(kShowtime);
  EXPECT_EQ(sent_dbm_hz(bench, 1, 750), sent_dbm_hz(usual, 1, 750));
}

// What arrives at the network side is the same of a near modem and of a farther one.
TEST(Tones, UpstreamPowerBackOffMakesLinesArriveAlike) {
  const auto arriving = [](const std::string& length_m, const std::string& spectrum) {
    Bench bench("[loop]\nlength_m = " + length_m + '\n' + spectrum + kShowtime);
    return received_dbm_hz(bench, 0, 100);
  };
  EXPECT_GT(arriving("100", ""), arriving("200", "") + 4);
  // The network side's filter takes 1 dB.
  const std::string backOff = "[spectrum]\nupbo = { a = 95.0, b = 1.5 }\n";
  const double asked_dbm_hz = -95 - 1.5 * std::sqrt(100 * 0.05175) - 1;
  EXPECT_NEAR(arriving("100", backOff), asked_dbm_hz, 1);
  EXPECT_NEAR(arriving("200", backOff), asked_dbm_hz, 1);
}

TEST(Tones, UpstreamPowerBackOffFollowsTheLossAtOneMegahertz) {
  const auto sent = [](const std::string& upbo, int device = 1) {
    Bench bench("[loop]\nlength_m = 20\n[spectrum]\nupbo = { a = 95.0, b = 1.5" + upbo + " }\n" + kShowtime);
    return sent_dbm_hz(bench, device, 400);
  };
  const double root = std::sqrt(400 * 0.05175);
  EXPECT_NEAR(sent(""), -95 + (1.8 - 1.5) * root, 0.01);  // at least 1.8 dB
  EXPECT_NEAR(sent(", forced_db = 3.0"), -95 + (3.0 - 1.5) * root, 0.01);
  EXPECT_NEAR(sent(", reference_db = 18.0"), -95 + 10 + (1.8 - 1.5) * root, 0.01);
  EXPECT_NEAR(sent(", reference_db = 1.0"), -95 + (1.8 - 1.5) * root, 0.01);
  EXPECT_GT(sent("", 0), -85);  // downstream is not backed off
}

TEST(Tones, TheTransmitPowerIs4dBmDownstreamAnd3Upstream) {
  Bench bench(kShowtime);
  for (const int device : {0, 1}) {
    const Memory signal = readAll(bench, device, VIRT_ADDR_TX_SIGNAL(0), kProcessedTones * 2);
    double power_mw = 0;
    for (size_t i = 0; i < signal.size(); i += 2) {
      const double level = static_cast<int16_t>(load_le16(&signal[i])) * 0.01 + 4.2;
      power_mw += std::pow(10, level / 10) * 51750;
    }
    EXPECT_NEAR(10 * std::log10(power_mw), device == 0 ? 4 : 3, 0.01);
  }
  // The shape: 8 dB from 2.2 to 30 MHz, 3 dB from there to 106.
  EXPECT_NEAR(sent_dbm_hz(bench, 1, 43) - sent_dbm_hz(bench, 1, 579), 8 * (579 - 43) * 0.05175 / 27.8, 0.02);
  EXPECT_NEAR(sent_dbm_hz(bench, 1, 600) - sent_dbm_hz(bench, 1, 1900), 3 * 1300 * 0.05175 / 76, 0.02);
  EXPECT_EQ(bench.read(1, VIRT_ADDR_TX_FEQ(0), 2), "00 40");
  const double amplitude =
      load_le16(fromHex(bench.read(1, VIRT_ADDR_TX_FEQ(0) + 2 * 1000, 2)).data()) / 16384.0;
  EXPECT_NEAR(20 * std::log10(amplitude), sent_dbm_hz(bench, 1, 1043) - sent_dbm_hz(bench, 1, 43), 0.02);
}

TEST(Tones, TheReceivedLevelIsTheSentOneLessTheCablesLoss) {
  for (const double length : {20.0, 100.0, 300.0}) {
    LoopConfig loop{"CAT5", length, -137, {{5, 3}}, false};
    BoardConfig config;
    config.loop = loop;
    config.device[0].line = LineState::kShowtime;
    Bench bench(config);
    const Cable cable(loop);
    for (const int device : {0, 1}) {
      for (const uint32_t tone : kSome) {
        const auto gain = cable.insertionGain(tone * 51750.0);
        const double signal_dbm_hz = sent_dbm_hz(bench, 1 - device, tone) + 20 * std::log10(std::abs(gain)) -
                                     receiverOf(device == 0).loss_db;
        const double noise_dbm_hz = heard_dbm_hz(device, -137);
        const double level =
            10 * std::log10(std::pow(10, signal_dbm_hz / 10) + std::pow(10, noise_dbm_hz / 10));
        EXPECT_NEAR(received_dbm_hz(bench, device, tone), level, 0.01) << length << ' ' << tone;
        // The equaliser undoes the phase of the cable.
        EXPECT_NEAR(std::arg(feq(bench, device, tone) * gain), 0, 0.001) << length << ' ' << tone;
        EXPECT_NEAR(snr_db(bench, device, tone), level - noise_dbm_hz, 0.05) << length << ' ' << tone;
      }
    }
  }
}

// However long the loop and whatever the noise: what the receiver measures of its noise is what there is, and
// the other end hears the same SNR from it.
TEST(Tones, TheNoiseIsThatOfTheLineOnEveryLoop) {
  for (const double length : {0.0, 250.0, 400.0, 480.0}) {
    for (const double noise : {-80.0, -100.0, -120.0, -140.0, -170.0}) {
      BoardConfig config;
      config.loop = {"CAD55", length, noise, {}, false};
      config.device[0].line = LineState::kShowtime;
      Bench bench(config);
      if (bench.lineState(0) != 6) {
        continue;  // too much noise to train
      }
      for (const int device : {0, 1}) {
        for (const uint32_t tone : kSome) {
          const double shown = snr_db(bench, device, tone);
          EXPECT_GE(shown, 0);
          EXPECT_NEAR(received_dbm_hz(bench, device, tone) - shown, heard_dbm_hz(device, noise), 0.1)
              << length << " m, " << noise << " dBm/Hz, " << tone;
          const uint8_t ask[] = {4, static_cast<uint8_t>(tone), static_cast<uint8_t>(tone >> 8),
                                 static_cast<uint8_t>(tone), static_cast<uint8_t>(tone >> 8)};
          const Memory told = fromHex(
              bench.ask(1 - device, MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, hex(ask, sizeof ask)));
          EXPECT_NEAR(told.at(2) / 2.0 - 32, shown, 0.25 + 0.1);
        }
      }
    }
  }
}

TEST(Tones, BitsFollowFromTheSnr) {
  Bench bench(withParams(0, "dsMargin = 90"));
  for (const int device : {0, 1}) {
    const double margin = device == 1 ? 9 : 6.3;
    const auto loading = bits(bench, device, VIRT_ADDR_RX_BLT(0));
    EXPECT_EQ(loading, bits(bench, 1 - device, VIRT_ADDR_TX_BLT(0)));
    EXPECT_EQ(counted(loading, 15, 15), 8U);
    for (uint32_t tone = kFirstTone; tone <= lastTone(1 - device); tone++) {
      const double capacity =
          std::log2(1 + signalToNoise(bench, device, tone) / std::pow(10, (9.8 + margin - 5) / 10));
      ASSERT_TRUE(loading[tone] == 15 || (loading[tone] <= capacity + 0.01 &&
                                          loading[tone] >= std::min(12.0, std::floor(capacity - 0.01))))
          << tone << ": " << loading[tone] << " bits of " << capacity;
    }
  }
}

TEST(Tones, BytesOfASymbolAreTheSumOfTheBits) {
  Bench bench(kShowtime);
  for (const int device : {0, 1}) {
    const auto loading = bits(bench, device, VIRT_ADDR_TX_BLT(0));
    const auto rmc = rmcBits(bench, device, rmcAddress(bench, device, true));
    uint32_t all = 0;
    uint32_t besideRmc = 0;
    uint32_t inRmc = 0;
    for (uint32_t tone = 0; tone < 2048; tone++) {
      const uint32_t carried =
          loading[tone] == 15 || loading[tone] < 0 ? 0 : static_cast<uint32_t>(loading[tone]);
      all += carried;
      besideRmc += rmc[tone] < 0 ? carried : 0;
      inRmc += rmc[tone] < 0 ? 0 : static_cast<uint32_t>(rmc[tone]);
    }
    EXPECT_EQ(framer(bench, device).TxBD, all / 8);
    EXPECT_EQ(framer(bench, device).TxBDR, besideRmc / 8);
    EXPECT_EQ(framer(bench, device).TxBR, inRmc / 8);
    EXPECT_EQ(framer(bench, 1 - device).RxBR, inRmc / 8);
  }
}

TEST(Tones, TheRmcHasFewBitsOnManySubcarriers) {
  Bench bench(kShowtime);
  const auto rmc = rmcBits(bench, 0, rmcAddress(bench, 0, true));
  EXPECT_EQ(counted(rmc, 2, 6), 128U);
  EXPECT_EQ(counted(rmc, -1, -1), 2048U - 128U);
  EXPECT_EQ(rmc[128], -1);  // a pilot
  EXPECT_EQ(counted(rmcBits(bench, 0, rmcAddress(bench, 0, false)), 0, 15), 0U);
}

TEST(Tones, EachTrainingWritesTheOtherRmcTable) {
  Bench bench(kShowtime);
  const uint32_t index = bench.word(0, VIRT_ADDR_RX_RMC_BLT_INDEX(0));
  const uint32_t address = rmcAddress(bench, 0, true);
  bench.writeWord(0, VIRT_ADDR_REINIT(0), 0);
  bench.wait(1 + kTrainingTime_s);
  ASSERT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.word(0, VIRT_ADDR_RX_RMC_BLT_INDEX(0)), index + 1);
  EXPECT_NE(rmcAddress(bench, 0, true), address);
  EXPECT_EQ(counted(rmcBits(bench, 0, rmcAddress(bench, 0, true)), 2, 6), 128U);
  EXPECT_EQ(counted(rmcBits(bench, 0, address), 0, 15), 0U);
  // An adaptation of the RMC's parameters writes the other table as well.
  bench.wait(901);
  EXPECT_EQ(bench.word(0, VIRT_ADDR_RX_RMC_BLT_INDEX(0)), index + 2);
}

TEST(Tones, EveryReadOfTheSnrWindowBeginsWithGuardWords) {
  Bench bench(kShowtime);
  bench.wait(2);
  const Memory all = fromHex(bench.read(0, VIRT_ADDR_SNR_BUF(0) + 4 * 43, 8 + 4 * 200));
  EXPECT_NE(load_le32(&all[0]), 0U);
  EXPECT_EQ(load_le32(&all[0]), load_le32(&all[4]));
  const Memory later = fromHex(bench.read(0, VIRT_ADDR_SNR_BUF(0) + 4 * 142, 8 + 4 * 101));
  EXPECT_EQ(hex(&later[8], 4 * 101), hex(&all[8 + 4 * 99], 4 * 101));
  EXPECT_EQ(load_le32(&later[0]), load_le32(&later[4]));
  // A short read returns only guard words. A read past the end of the area returns zeros from there on.
  EXPECT_EQ(bench.read(0, VIRT_ADDR_SNR_BUF(0) + 4 * 43, 4), hex(all.data(), 4));
  EXPECT_EQ(bench.read(0, VIRT_ADDR_SNR_BUF(0) + 4 * 2047, 16).substr(24), "ff ff ff ff 00 00 00 00");
}

TEST(Tones, APartOfATableIsReadAsInTheWhole) {
  Bench bench(kShowtime);
  for (const uint32_t address : {VIRT_ADDR_TX_BLT(0), VIRT_ADDR_RX_FEQ_MAN(0), VIRT_ADDR_RX_FEQ_EXP(0)}) {
    const Memory whole = fromHex(bench.read(1, address, 64));
    for (uint16_t at = 0; at < 60; at = static_cast<uint16_t>(at + 7)) {
      EXPECT_EQ(bench.read(1, address + at, 3), hex(&whole[at], 3)) << address << '+' << at;
    }
  }
  // 1929 exponents, and nothing after them.
  EXPECT_EQ(bench.read(1, VIRT_ADDR_RX_FEQ_EXP(0) + 1929, 2), "00 00");
}

TEST(Tones, AreZeroOutsideShowtime) {
  Bench bench;
  const uint32_t addresses[] = {VIRT_ADDR_MEDLEY_SET_DS(0), VIRT_ADDR_TX_BLT(0),        VIRT_ADDR_RX_BLT(0),
                                VIRT_ADDR_SNR_BUF(0),       VIRT_ADDR_RX_FEQ_MAN(0),    VIRT_ADDR_RX_GAIN(0),
                                VIRT_ADDR_TX_SIGNAL(0),     VIRT_ADDR_RX_VEC_COEFFS(0), VIRT_ADDR_TX_FEQ(0)};
  for (const uint32_t address : addresses) {
    EXPECT_EQ(readAll(bench, 0, address, 64), Memory(64)) << address;
  }
  bench.wait(kTrainingTime_s);
  for (const uint32_t address : addresses) {
    EXPECT_NE(readAll(bench, 0, address, 64), Memory(64)) << address;
  }
  bench.rebootToB1(1);
  bench.wait(10);
  for (const uint32_t address : addresses) {
    EXPECT_EQ(readAll(bench, 0, address, 64), Memory(64)) << address;
    EXPECT_EQ(readAll(bench, 1, address, 64), Memory(64)) << address;
  }
}

TEST(Tones, WritingThemHasNoEffect) {
  Bench bench(kShowtime);
  const std::string before = bench.read(0, VIRT_ADDR_TX_BLT(0), 8);
  EXPECT_EQ(bench.writeWord(0, VIRT_ADDR_TX_BLT(0), 0xFFFFFFFF), "ok");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_TX_BLT(0), 8), before);
}

TEST(Tones, TheFarEndsCanBeReadOverTheLine) {
  Bench bench(kShowtime);
  EXPECT_EQ(bench.ask(0, MGMT_FAR_END_REQ_TYPE_READMEM, "02 00 10 00 01 00 00 00 00 00 08 e4").substr(36),
            bench.read(1, VIRT_ADDR_RX_FEQ_MAN(0), 16));
}

TEST(Tones, EitherEndLimitsTheLoading) {
  for (const int device : {0, 1}) {
    Bench bench(withParams(device, "blUpperLimit = 7"));
    const auto loading = bits(bench, 0, VIRT_ADDR_TX_BLT(0));
    EXPECT_EQ(counted(loading, 8, 14), 0U);
    EXPECT_GT(counted(loading, 7, 7), 1000U);
    // The attainable rate is not limited.
    EXPECT_GT(framer(bench, 1).attainableNdr, derived(bench, 1).RxNDR * 3 / 2);
  }
}

TEST(Tones, TheMarginIsWhatTheLoadingLeaves) {
  Bench bench("[loop]\nlength_m = 5\n[[device]]\nline = \"showtime\"\nparams = { usMargin = 90 }");
  // 12 bits everywhere: the subcarrier with the lowest SNR has the least margin.
  double least_db = 1000;
  for (uint32_t tone = kFirstTone; tone <= lastTone(1); tone++) {
    least_db = std::min(least_db, snr_db(bench, 0, tone) - 4.8 - 10 * std::log10(4095));
  }
  EXPECT_NEAR(framer(bench, 0).snrMargin, least_db * 10, 1);
  EXPECT_GT(framer(bench, 0).snrMargin, 120U);
  EXPECT_EQ(fdu(bench, 1).rxMargin, framer(bench, 1).snrMargin);
  EXPECT_GT(framer(bench, 0).rmcSnrMargin, framer(bench, 0).snrMargin);
  EXPECT_EQ(bench.block<GFAST_FDU_INIT_COUNTERS_S>(1, kFduInit).usMargin, 90U);
}

TEST(Tones, ALineParameterAppliesFromTheNextTraining) {
  Bench bench(kShowtime);
  const uint32_t before = framer(bench, 0).RxBD;
  EXPECT_EQ(bench.write(0, VIRT_ADDR_CONFIG_PER_LINE(0) + parameterTable()[PARAMS_usMargin].offset, "c8 00"),
            "ok");
  EXPECT_EQ(framer(bench, 0).RxBD, before);
  bench.writeWord(0, VIRT_ADDR_REINIT(0), 0);
  bench.wait(1 + kTrainingTime_s);
  ASSERT_EQ(bench.lineState(0), 6U);
  EXPECT_LT(framer(bench, 0).RxBD, before);
  EXPECT_EQ(framer(bench, 0).RxBD, framer(bench, 1).TxBD);
  EXPECT_EQ(framer(bench, 0).snrMargin, 203U);
}

TEST(Tones, TheNetworkSideSetsHowTheFrameIsShared) {
  Bench bench(withParams(0, "numDownstreamSymbols = 20"));
  Bench shorter(withParams(0, "numDownstreamSymbols = 17, numTxSymbolsInFrame = 23"));
  const auto db = bench.block<ETR_DB_S>(1, kEtrDb);
  EXPECT_EQ(db.numRxSymbols, 20U);
  EXPECT_EQ(db.numTxSymbols, 15U);
  EXPECT_EQ(framer(bench, 0).dtaCurrentMds, 20U);
  EXPECT_EQ(shorter.block<ETR_DB_S>(0, kEtrDb).numSymbolsInFrame, 23U);
  EXPECT_EQ(shorter.block<ETR_DB_S>(0, kEtrDb).numRxSymbols, 5U);
  shorter.wait(23);
  EXPECT_EQ(framer(shorter, 0).numOfTxFrames, 48000U);
}

TEST(Tones, AdaptationsThatAreSwitchedOffAreNotMade) {
  Bench bench((withParams(0, "disableDsSra = 1, disableUsFra = 1") +
               "[[loop_event]]\nat_s = 10\nerrors = 0.2\nfor_s = 3"));
  bench.wait(3700);
  EXPECT_EQ(framer(bench, 0).sraTxExngCnt, 0U);
  EXPECT_EQ(framer(bench, 0).sraRxExngCnt, 12U);
  EXPECT_EQ(framer(bench, 0).fraTxExngCnt, 3U);
  EXPECT_EQ(framer(bench, 0).fraRxExngCnt, 0U);
}

TEST(Tones, ALoadingThatCarriesTooLittleDoesNotTrain) {
  Bench bench("[[device]]\nparams = { blUpperLimit = 0 }");
  bench.wait(5);
  EXPECT_EQ(bench.events(0), "3>4 4>5 failure 7 5>3");
  EXPECT_EQ(bench.word(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_INIT_FAILURE_CAUSE), 2U);
}

TEST(Tones, NoFarEndIsFoundWhenEverySubcarrierIsSpared) {
  Bench bench("[[device]]\nparams = { RFIBand_0 = 0x07FF0000 }");
  bench.wait(6);
  EXPECT_EQ(bench.word(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_INIT_FAILURE_CAUSE), 4U);
}

// ---- Blocks of a vector of test parameters ----

TEST(PmdVector, HoldsTheOtherEndsSnrInHalfDecibels) {
  Bench bench("[[device]]\nline = \"showtime\"\nparams = { RFIBand_0 = 0x00C80064 }");
  const Memory answer = fromHex(bench.ask(0, MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, "04 2a 00 21 01"));
  ASSERT_EQ(answer.size(), 2U + 248);
  EXPECT_EQ(load_le16(answer.data()), 256U);
  EXPECT_EQ(answer[2], 255);
  EXPECT_EQ(answer[2 + 100 - 42], 255);
  EXPECT_NEAR(answer[2 + 1] / 2.0 - 32, snr_db(bench, 1, 43), 0.25);
  EXPECT_NEAR(answer[2 + 247] / 2.0 - 32, snr_db(bench, 1, 289), 0.25);
}

TEST(PmdVector, WrongRequestsAreRefused) {
  Bench bench(kShowtime);
  const auto ask = [&bench](const char* request) {
    return bench.ask(0, MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, request);
  };
  EXPECT_EQ(ask(""), "ff");
  EXPECT_EQ(ask("04 00 00 07"), "ff");
  EXPECT_EQ(ask("04 00 00 07 00 00"), "ff");
  EXPECT_EQ(ask("05 00 00 07 00"), "ff");        // no such vector
  EXPECT_EQ(ask("04 08 00 07 00"), "ff");        // last before first
  EXPECT_EQ(ask("04 00 00 f8 00"), "ff");        // one subcarrier too many
  EXPECT_EQ(ask("04 ff 07 00 08"), "ff");        // past the last subcarrier
  EXPECT_EQ(ask("04 ff 07 ff 07"), "00 01 ff");  // the last subcarrier
  EXPECT_EQ(ask("04 00 00 f7 00").size(), 250U * 3 - 1);
}
