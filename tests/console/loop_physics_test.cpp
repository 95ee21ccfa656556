// The console shows the loop that the board file describes: attenuation, SNR, noise and bits of every
// subcarrier are computed here from the cable's line constants, without code of the board, and compared with
// what the console prints.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <map>
#include <numbers>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "console/lab_on_board.h"

namespace {

using Complex = std::complex<double>;

constexpr int kSubcarriers = 2048;
constexpr int kFirst = 43;  // the first subcarrier that carries a signal
constexpr double kSpacing_hz = 51750;
constexpr double kReference_ohm = 100;

double dB(double power) {
  return 10 * std::log10(power);
}
double power(double dB) {
  return std::pow(10, dB / 10);
}

// What one direction has of its own.
struct Way {
  int last;  // subcarrier that carries a signal
  double sent_dbm;
  double receiverNoise_dbm_hz;
  double receiverLoss_db;
  double reserve_db;  // above the target margin
};
constexpr Way kDown{1971, 4, -150, 0, 0};
constexpr Way kUp{1959, 3, -145, 1, 0.3};

const Way& wayOf(const std::string& end) {
  return end.find("ds") == std::string::npos ? kUp : kDown;
}

// Line constants of a wire type (ITU-T G.9701, reference model of twisted pairs).
struct Wire {
  const char* name;
  double z0, nVF, rs0, qL, qH, qx, qy, phi, fd, qc;
};
constexpr Wire kCad55 = {"CAD55", 105.0694, 0.6976, 0.1871, 1.5315, 0.7415, 1, 0, -0.2356, 1, 1.0016};
constexpr Wire kCat5 = {"CAT5", 98, 0.690464, 0.1659, 2.15, 0.85945, 0.5, 0.722636, 0.973846e-3, 1, 0};

// Propagation of one frequency along a wire.
struct Wave {
  Complex gamma;      // per metre
  Complex impedance;  // ohm

  Wave(const Wire& wire, double frequency_hz) {
    constexpr double pi = std::numbers::pi;
    constexpr double c0 = 3e8;
    constexpr double mu0 = 4e-7 * pi;
    const double w = 2 * pi * frequency_hz;
    const Complex jw(0, w);
    const double inductance = wire.z0 / (wire.nVF * c0);
    const double capacitance = 1 / (wire.z0 * wire.nVF * c0);
    const double qs = 1 / (wire.qH * wire.qH * wire.qL);
    const double ws = wire.qH * wire.qH * 4 * pi * wire.rs0 / mu0;
    const Complex skin = jw / ws;
    const Complex root = qs * qs * wire.qx * wire.qx +
                         2.0 * skin * (qs * qs + skin * wire.qy) / (qs * qs / wire.qx + skin * wire.qy);
    const Complex series = jw * inductance + wire.rs0 * (1 - qs * wire.qx + std::sqrt(root));
    const Complex shunt =
        jw * capacitance * (1 - wire.qc) * std::pow(1.0 + jw / (2 * pi * wire.fd), -2 * wire.phi / pi) +
        jw * capacitance * wire.qc;
    gamma = std::sqrt(series * shunt);
    impedance = std::sqrt(series / shunt);
  }
};

// Voltages and currents at one end of a two-port from those at the other.
struct Chain {
  Complex a = 1, b = 0, c = 0, d = 1;

  Chain operator*(const Chain& next) const {
    return {a * next.a + b * next.c, a * next.b + b * next.d, c * next.a + d * next.c,
            c * next.b + d * next.d};
  }
};

Chain section(const Wave& wave, double length_m) {
  const Complex way = wave.gamma * length_m;
  return {std::cosh(way), wave.impedance * std::sinh(way), std::sinh(way) / wave.impedance, std::cosh(way)};
}

Chain bridgedTap(const Wave& wave, double length_m) {
  return {1, 0, std::tanh(wave.gamma * length_m) / wave.impedance, 1};
}

// A pair between two modems, with at most one bridged tap.
struct Loop {
  Wire wire;
  double length_m;
  double noise_dbm_hz;
  double tapAt_m = 0;
  double tapLength_m = 0;

  friend void PrintTo(const Loop& loop, std::ostream* out) {
    *out << loop.length_m << " m of " << loop.wire.name;
  }

  std::string board() const {
    std::ostringstream text;
    text << "[loop]\ncable = \"" << wire.name << "\"\nlength_m = " << length_m
         << ".0\nnoise_dbm_hz = " << noise_dbm_hz << ".0\n";
    if (tapLength_m > 0) {
      text << "taps = [ { at_m = " << tapAt_m << ".0, length_m = " << tapLength_m << ".0 } ]\n";
    }
    text << boardWithLines("showtime");
    return text.str();
  }

  // The level at the far end over the level sent, dB, between ends of 100 ohm.
  double gain_db(int subcarrier) const {
    const Wave wave(wire, subcarrier * kSpacing_hz);
    const Chain way =
        section(wave, tapAt_m) * bridgedTap(wave, tapLength_m) * section(wave, length_m - tapAt_m);
    const Complex ratio = (way.a + way.b / kReference_ohm + way.c * kReference_ohm + way.d) / 2.0;
    return -2 * dB(std::abs(ratio));
  }

  double noiseHeard_dbm_hz(const Way& way) const {
    return dB(power(noise_dbm_hz) + power(way.receiverNoise_dbm_hz));
  }
};

// The limit of the transmitter, dBm/Hz.
double mask_dbm_hz(int subcarrier) {
  const double f_MHz = subcarrier * kSpacing_hz / 1e6;
  return f_MHz < 30 ? -65 - 8 * (f_MHz - 2.2) / (30 - 2.2) : -73 - 3 * (f_MHz - 30) / (106 - 30);
}

// What is sent: the mask, scaled down as a whole until all subcarriers together have at most the power
// allowed.
// Summed up once: a slow processor would take half a minute for each table.
double maskPower_dbm(int last) {
  static std::map<int, double> known;
  const auto [entry, isNew] = known.try_emplace(last, 0);
  if (isNew) {
    double total_mW = 0;
    for (int i = kFirst; i <= last; i++) {
      total_mW += power(mask_dbm_hz(i)) * kSpacing_hz;
    }
    entry->second = dB(total_mW);
  }
  return entry->second;
}

double sent_dbm_hz(const Way& way, int subcarrier) {
  return mask_dbm_hz(subcarrier) - std::max(0.0, maskPower_dbm(way.last) - way.sent_dbm);
}

// Of the signal alone. Receivers show that of signal and noise together.
double snr_db(const Loop& loop, const Way& way, int subcarrier) {
  return sent_dbm_hz(way, subcarrier) + loop.gain_db(subcarrier) - way.receiverLoss_db -
         loop.noiseHeard_dbm_hz(way);
}

// Not yet rounded down to what is loaded.
double capacity_bits(const Way& way, double snr_db) {
  const double gap_db = 9.8 + 6 + way.reserve_db - 5;  // gap, target margin, reserve, coding gain
  return std::log2(1 + power(snr_db - gap_db));
}

// A column of a table as the console prints it, counted from 1; the row is the subcarrier.
std::vector<double> column(const std::string& table, int number) {
  std::vector<double> values;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    double value = 0;
    for (int i = 0; i < number; i++) {
      words >> value;
    }
    values.push_back(value);
  }
  return values;
}

class LoopPhysics : public LabOnBoard, public testing::WithParamInterface<Loop> {
 protected:
  LoopPhysics() { start(loop().board()); }

  const Loop& loop() const { return GetParam(); }

  std::vector<double> shown(const std::string& command, const std::string& end, int columnNumber) {
    const std::vector<double> values = column(typed("show " + command + " " + end), columnNumber);
    EXPECT_EQ(values.size(), kSubcarriers) << command;
    return values.size() == kSubcarriers ? values : std::vector<double>(kSubcarriers);
  }

  double number(const std::string& command) { return std::stod(typed(command)); }
};

const std::vector<std::string> kEveryEnd = {"0 ds", "0 us", "1 ds", "1 us"};

// A level is shown rounded to a whole decibel. An SNR that the far end measured is rounded twice: first to
// half a decibel.
constexpr double kLevelResolution_db = 0.5 + 0.01;
constexpr double kFarEndResolution_db = 0.25;

// Line 0 is at the network side and receives upstream.
bool farEndReceives(const std::string& end) {
  return end == "0 ds" || end == "1 us";
}

TEST_P(LoopPhysics, AttenuationIsThatOfTheCable) {
  for (const std::string& end : kEveryEnd) {
    const std::vector<double> shown_db = shown("HLOGps", end, 3);
    for (int i = kFirst; i <= kUp.last; i++) {  // hosts show what both directions use
      // The noise is measured with the signal.
      const double noise_db = dB(1 + 1 / power(snr_db(loop(), wayOf(end), i)));
      ASSERT_NEAR(shown_db[static_cast<size_t>(i)], loop().gain_db(i) - wayOf(end).receiverLoss_db + noise_db,
                  kLevelResolution_db)
          << end << ", subcarrier " << i;
    }
  }
}

TEST_P(LoopPhysics, SnrFollowsFromPowerLossAndNoise) {
  for (const std::string& end : kEveryEnd) {
    const std::vector<double> shown_db = shown("SNRps", end, 3);
    const double resolution_db = kLevelResolution_db + (farEndReceives(end) ? kFarEndResolution_db : 0);
    for (int i = kFirst; i <= kUp.last; i++) {
      const double snr = snr_db(loop(), wayOf(end), i);
      ASSERT_NEAR(shown_db[static_cast<size_t>(i)], dB(1 + power(snr)), resolution_db)
          << end << ", subcarrier " << i;
    }
  }
}

TEST_P(LoopPhysics, NoiseIsThatOfTheLoop) {
  for (const std::string& end : kEveryEnd) {
    const std::vector<double> shown_dbm_hz = shown("ALNps", end, 3);
    for (int i = kFirst; i <= kUp.last; i++) {
      ASSERT_NEAR(shown_dbm_hz[static_cast<size_t>(i)], loop().noiseHeard_dbm_hz(wayOf(end)),
                  kLevelResolution_db + (farEndReceives(end) ? kFarEndResolution_db : 0))
          << end << ", subcarrier " << i;
    }
  }
}

TEST_P(LoopPhysics, BitsAreThoseThatTheSnrCarries) {
  constexpr double lowest = 1;
  constexpr double highest = 12;
  for (const std::string& end : kEveryEnd) {
    const std::vector<double> loaded = shown("BITSps", end, 3);
    int setAside = 0;
    for (int i = kFirst; i <= wayOf(end).last; i++) {
      const double capacity = capacity_bits(wayOf(end), snr_db(loop(), wayOf(end), i));
      const double bits = loaded[static_cast<size_t>(i)];
      if (bits == 0 && capacity >= lowest) {
        setAside++;
        continue;
      }
      // Where the capacity is a whole number but for rounding, either side of it is right.
      constexpr double slack = 0.001;
      ASSERT_LE(bits, std::min(highest, std::floor(capacity + slack))) << end << ", subcarrier " << i;
      ASSERT_GE(bits, capacity < lowest ? 0 : std::min(highest, std::floor(capacity - slack)))
          << end << ", subcarrier " << i;
    }
    EXPECT_LE(setAside, 8) << end;  // pilots
  }
}

TEST_P(LoopPhysics, SubcarriersOutsideTheBandAreEmpty) {
  for (const std::string& end : kEveryEnd) {
    const std::vector<double> bits = shown("BITSps", end, 3);
    const std::vector<double> snr = shown("SNRps", end, 2);
    const std::vector<double> noise = shown("ALNps", end, 2);
    const std::vector<double> magnitude = shown("HLOGps", end, 2);
    for (int i = 0; i < kSubcarriers; i++) {
      if (i < kFirst || i > kDown.last) {
        const auto index = static_cast<size_t>(i);
        ASSERT_EQ(bits[index], 0) << i;
        ASSERT_EQ(snr[index], 255) << i;
        ASSERT_EQ(noise[index], 255) << i;
        ASSERT_EQ(magnitude[index], 1023) << i;
      }
    }
  }
}

TEST_P(LoopPhysics, SignalAttenuationFollowsFromTheSubcarriers) {
  for (const std::string& end : kEveryEnd) {
    double sent_mW = 0;
    double received_mW = 0;
    for (int i = kFirst; i <= kUp.last; i++) {
      sent_mW += power(sent_dbm_hz(kDown, i));
      // It is computed from magnitudes that are rounded to whole decibels, beginning at 6 dB.
      received_mW +=
          power(sent_dbm_hz(kDown, i) + std::round(loop().gain_db(i) - wayOf(end).receiverLoss_db - 6) + 6);
    }
    const double attenuation_db = dB(sent_mW / received_mW);
    EXPECT_NEAR(number("show SATN " + end), attenuation_db, 0.05 + 0.01) << end;
  }
}

INSTANTIATE_TEST_SUITE_P(Loops, LoopPhysics,
                         testing::Values(Loop{kCad55, 100, -140}, Loop{kCat5, 150, -135, 40, 5}),
                         [](const auto& loop) { return std::string(loop.param.wire.name); });

TEST(CableFormulas, GiveTheKnownLossOfEachCable) {
  const auto loss_db = [](const Wire& wire, double length_m, double frequency_MHz) {
    return -Loop{wire, length_m, -140}.gain_db(
        static_cast<int>(std::lround(frequency_MHz * 1e6 / kSpacing_hz)));
  };
  EXPECT_NEAR(loss_db(kCad55, 100, 10), 6.3, 0.1);
  EXPECT_NEAR(loss_db(kCad55, 100, 50), 16.7, 0.1);
  EXPECT_NEAR(loss_db(kCad55, 100, 100), 26.5, 0.1);
  EXPECT_NEAR(loss_db(kCad55, 200, 10), 12.6, 0.1);
  EXPECT_NEAR(loss_db(kCad55, 200, 50), 33.3, 0.1);
  EXPECT_NEAR(loss_db(kCad55, 200, 100), 53.0, 0.1);
  EXPECT_NEAR(loss_db(kCat5, 100, 10), 5.7, 0.1);
  EXPECT_NEAR(loss_db(kCat5, 100, 50), 12.7, 0.1);
  EXPECT_NEAR(loss_db(kCat5, 100, 100), 18.2, 0.1);
}

}  // namespace
