// Test parameters per subcarrier: which end is read for each direction at each side, and how values are
// encoded.
#include "support/trace_log.h"
#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

constexpr double kTransmitAceOff = -35.72;

// A direction of the line, read at one of its sides.
struct Way {
  const char* name;
  QVR_lineId_t line;
  bool upstream;

  // Whether the far end receives this direction.
  bool receivedFar() const { return upstream == (line == kSubscriberSide); }
};
constexpr Way kWays[] = {
    {"down at the network", kNetworkSide, false},
    {"up at the network", kNetworkSide, true},
    {"down at the subscriber", kSubscriberSide, false},
    {"up at the subscriber", kSubscriberSide, true},
};

class TestParameters : public ToneTest {
 protected:
  void SetUp() override {
    ToneTest::SetUp();
    std::fill_n(bytes_, QVR_MAX_NUMBER_OF_TONES, uint8_t{0xAA});
    std::fill_n(hlog_, QVR_MAX_NUMBER_OF_TONES, int16_t{-7777});
  }

  bool bytesUntouched() const {
    return std::all_of(bytes_, bytes_ + QVR_MAX_NUMBER_OF_TONES, [](uint8_t byte) { return byte == 0xAA; });
  }
  bool hlogUntouched() const {
    return std::all_of(hlog_, hlog_ + QVR_MAX_NUMBER_OF_TONES, [](int16_t value) { return value == -7777; });
  }

  // The set on which the chip transmits, or the one on which it receives.
  static Script readsSet(int device, bool sent, const std::vector<Band>& bands) {
    return reads(device, sent ? kSentSet : kReceivedSet, medleySet(bands));
  }

  // The near end's SNR: the window size over each energy.
  static Script readsNearSnr(int device, uint32_t firstTone, const std::vector<uint32_t>& energies,
                             uint32_t windowSize) {
    return reads(device, 0xE4180000 + 4 * firstTone, window(energies)) + readsScaling(device, windowSize, 0);
  }

  static Script readsFarSnr(int device, const std::vector<Band>& bands, const Bytes& values) {
    return readsSet(device, true, bands) + asksFarEndSnr(device, values);
  }

  // Received levels. Every coefficient is 2^exponent and the gain is 0, so the level is -6.02 * exponent -
  // 35.72 plus the correction of the receive path.
  Script readsLevels(bool far, int device, const Bytes& exponents) {
    Bytes mantissas;
    for (size_t i = 0; i < exponents.size(); i++) {
      append16(mantissas, 4096);
      append16(mantissas, 0);
    }
    Bytes even = exponents;
    even.resize(exponents.size() + exponents.size() % 2);
    return readsEqualiser(far, device, mantissas, even, 0, 0);
  }

  static double levelOf(int exponent, uint32_t tone) {
    const double f = tone * 0.05175 / 106;
    return -20 * std::log10(2.0) * exponent + (0.25 - 0.15 * f + 2.3 * f * f) + kTransmitAceOff;
  }

  Script readsSent(bool far, int device, const std::vector<int>& levels) {
    return readsAt(far, device, 0xE4200000, littleEndian16(levels));
  }

  uint8_t bytes_[QVR_MAX_NUMBER_OF_TONES];
  G9972_HLOGps_t hlog_;
};

// ---- Bits ----

struct BitsKind {
  const char* name;
  QVR_retval_t (*ds)(QVR_lineId_t line, G9972_BITSps_t bits);
  QVR_retval_t (*us)(QVR_lineId_t line, G9972_BITSps_t bits);
  bool rmc;
};
constexpr BitsKind kBits[] = {
    {"data", QVR_getLineStatusBITSpsds, QVR_getLineStatusBITSpsus, false},
    {"RMC", QVR_getLineStatusBITSRMCpsds, QVR_getLineStatusBITSRMCpsus, true},
};

class Bits : public TestParameters {
 protected:
  static Script readsLoading(const BitsKind& kind, int device, bool isTx) {
    const Script found = findsTones(device, 43, 1929) + readsSet(device, isTx, {{50, 51}});
    const Bytes entries = littleEndian16({50 << 4 | 12, 51 << 4 | 15});
    if (!kind.rmc) {
      return found + reads(device, isTx ? 0xE5000000 : 0xE5001000, entries);
    }
    Bytes area = entries;
    area.resize(4096, 0xFF);
    const uint32_t index = isTx ? 0xE500B000 : 0xE500C000;
    return found + readsWord(device, index, 0) + readsInPieces(device, isTx ? 0xE5003000 : 0xE5004000, area) +
           readsWord(device, index, 0);
  }
};

TEST_F(Bits, ReadTheLoadingOfTheDirection) {
  for (const BitsKind& kind : kBits) {
    for (const Way& way : kWays) {
      SCOPED_TRACE(std::string(kind.name) + ' ' + way.name);
      driver_.expect(readsLoading(kind, way.line, way.receivedFar()));
      EXPECT_EQ((way.upstream ? kind.us : kind.ds)(way.line, bytes_), QVR_E_STATUS_OK);
      for (uint32_t tone = 0; tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
        ASSERT_EQ(bytes_[tone], tone == 50 ? 12 : 0) << tone;
      }
      driver_.verify();
    }
  }
}

TEST_F(Bits, ReturnTheCodeOfEachFailedRequest) {
  for (const BitsKind& kind : kBits) {
    for (const Way& way : kWays) {
      SCOPED_TRACE(std::string(kind.name) + ' ' + way.name);
      const auto build = [&] { return readsLoading(kind, way.line, way.receivedFar()); };
      expectEachFailureAnswered(build, [&](bool& untouched) {
        const QVR_retval_t status = (way.upstream ? kind.us : kind.ds)(way.line, bytes_);
        untouched = bytesUntouched();
        return status;
      });
    }
  }
}

// ---- SNR ----

class Snr : public TestParameters {
 protected:
  static QVR_retval_t get(const Way& way, G9972_SNRps_t snr) {
    return way.upstream ? QVR_getLineStatusSNRpsus(way.line, snr) : QVR_getLineStatusSNRpsds(way.line, snr);
  }

  // Downstream uses the set on which the chip transmits, upstream the set that carries upstream.
  static bool bySentSet(const Way& way) { return !way.upstream || way.line == kSubscriberSide; }

  // Four processed subcarriers from 50 on, with an SNR of 20 dB each.
  static Script readsSnr(const Way& way, const std::vector<Band>& bands) {
    const Script measured = way.receivedFar()
                                ? readsFarSnr(way.line, bands, Bytes(bands.back().last + size_t{1}, 104))
                                : readsNearSnr(way.line, 50, {1, 1, 1, 1}, 100);
    return findsTones(way.line, 50, 4) + measured + readsSet(way.line, bySentSet(way), bands);
  }
};

TEST_F(Snr, IsReadFromTheEndThatReceives) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    driver_.expect(readsSnr(way, {{50, 51}, {53, 53}}));
    EXPECT_EQ(get(way, bytes_), QVR_E_STATUS_OK);
    for (uint32_t tone = 0; tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
      const bool inSet = tone == 50 || tone == 51 || tone == 53;
      ASSERT_EQ(bytes_[tone], inSet ? 104 : 255) << tone;
    }
    driver_.verify();
  }
}

TEST_F(Snr, IsRoundedToWholeDecibelsAndEncodedInHalves) {
  // 10.3 dB is 42.3 dB above -32.
  driver_.expect(findsTones(0, 50, 1) + readsNearSnr(0, 50, {100}, 1072) + readsSet(0, false, {{50, 50}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[50], 84);
  // 0.5 and -0.5 dB at the far end: halves are rounded away from zero.
  driver_.expect(findsTones(0, 0, 3) + readsFarSnr(0, {{0, 2}}, {65, 63, 64}) + readsSet(0, true, {{0, 2}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsds(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[0], 66);
  EXPECT_EQ(bytes_[1], 64);
  EXPECT_EQ(bytes_[2], 64);
}

TEST_F(Snr, IsLimitedToTheEncoding) {
  // No noise, an SNR of -96 dB, of 0 dB, and of -6 dB.
  driver_.expect(findsTones(0, 50, 4) + readsNearSnr(0, 50, {0, 0xFFFFFFFF, 1, 4}, 1) +
                 readsSet(0, false, {{50, 53}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[50], 254);
  EXPECT_EQ(bytes_[51], 0);
  EXPECT_EQ(bytes_[52], 64);
  EXPECT_EQ(bytes_[53], 52);
  driver_.expect(findsTones(0, 50, 2) + reads(0, 0xE4180000 + 4 * 50, window({1, 2})) +
                 readsScaling(0, 0xFFFFFFFF, 0) + readsSet(0, false, {{50, 51}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[50], 254);  // 96.3 dB
  EXPECT_EQ(bytes_[51], 250);  // 93.3 dB
}

TEST_F(Snr, HasNoValueForNaN) {
  driver_.expect(findsTones(0, 50, 2) + readsNearSnr(0, 50, {0, 1}, 0) + readsSet(0, false, {{50, 51}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[50], 255);
  EXPECT_EQ(bytes_[51], 0);
  driver_.expect(findsTones(0, 0, 2) + readsFarSnr(0, {{0, 1}}, {255, 254}) + readsSet(0, true, {{0, 1}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsds(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[0], 255);
  EXPECT_EQ(bytes_[1], 254);
}

TEST_F(Snr, StartsAtTheSetDownstreamAndAtTheFirstProcessedToneUpstream) {
  // The table's entries are 0, 10, 20 and 30 dB.
  const std::vector<uint32_t> energies{1000, 100, 10, 1};
  driver_.expect(findsTones(1, 50, 4) + readsNearSnr(1, 50, energies, 1000) + readsSet(1, true, {{51, 53}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsds(1, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(Bytes(bytes_ + 50, bytes_ + 55), (Bytes{255, 64, 84, 104, 255}));
  driver_.expect(findsTones(0, 50, 4) + readsNearSnr(0, 50, energies, 1000) + readsSet(0, false, {{51, 60}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(Bytes(bytes_ + 50, bytes_ + 55), (Bytes{255, 84, 104, 124, 255}));
}

TEST_F(Snr, HasNoValueWhereNothingWasMeasured) {
  // At the subscriber side: downstream the set has more subcarriers than are processed, upstream more are
  // processed than the far end reports.
  driver_.expect(findsTones(1, 50, 2) + readsNearSnr(1, 50, {1, 1}, 100) + readsSet(1, true, {{50, 53}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsds(1, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(Bytes(bytes_ + 50, bytes_ + 54), (Bytes{104, 104, 255, 255}));
  driver_.expect(findsTones(1, 0, 4) + readsFarSnr(1, {{0, 1}}, {104, 104}) + readsSet(1, true, {{0, 3}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(1, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(Bytes(bytes_, bytes_ + 4), (Bytes{104, 104, 255, 255}));
}

TEST_F(Snr, HasNoValuesForAnEmptySet) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    const Script measured =
        way.receivedFar() ? readsSet(way.line, true, {}) : readsNearSnr(way.line, 50, {1}, 100);
    driver_.expect(findsTones(way.line, 50, 1) + measured + readsSet(way.line, bySentSet(way), {}));
    EXPECT_EQ(get(way, bytes_), QVR_E_STATUS_OK);
    EXPECT_TRUE(std::all_of(bytes_, bytes_ + 2048, [](uint8_t byte) { return byte == 255; }));
    driver_.verify();
  }
}

TEST_F(Snr, HasNoValuesBeyondTheGrid) {
  driver_.expect(findsTones(0, 2046, 0xFFFFFFFF) + readsNearSnr(0, 2046, {1, 1}, 100) +
                 readsSet(0, false, {{0, 2047}}) + findsTones(0, 5000, 5) + readsScaling(0, 1, 0) +
                 readsSet(0, false, {{0, 2047}}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(Bytes(bytes_ + 2044, bytes_ + 2048), (Bytes{255, 255, 104, 104}));
  EXPECT_EQ(QVR_getLineStatusSNRpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(Bytes(bytes_ + 2044, bytes_ + 2048), (Bytes{255, 255, 255, 255}));
}

TEST_F(Snr, ReturnsTheRefusalOfTheFarEnd) {
  driver_.expect(findsTones(0, 50, 4) + readsSet(0, true, {{50, 53}}) + asksSnrBlock(0, 0, 53, {0xFF}));
  EXPECT_EQ(QVR_getLineStatusSNRpsds(0, bytes_), QVR_E_FAREND_EOC_NACK);
  EXPECT_TRUE(bytesUntouched());
}

TEST_F(Snr, ReturnsTheCodeOfEachFailedRequest) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    expectEachFailureAnswered(
        [&] {
          return readsSnr(way, {{50, 53}});
        },
        [&](bool& untouched) {
          const QVR_retval_t status = get(way, bytes_);
          untouched = bytesUntouched();
          return status;
        });
  }
}

// ---- Active line noise ----

class Noise : public TestParameters {
 protected:
  static QVR_retval_t get(const Way& way, G9972_ALNps_t noise) {
    return way.upstream ? QVR_getLineStatusALNpsus(way.line, noise)
                        : QVR_getLineStatusALNpsds(way.line, noise);
  }

  // Both directions use the set that carries downstream.
  static bool bySentSet(const Way& way) { return way.line == kNetworkSide; }

  // Four processed subcarriers from 50 on, with an SNR of 20 dB each.
  Script readsNoise(const Way& way, const std::vector<Band>& bands, const Bytes& exponents) {
    Script script = findsTones(way.line, 50, 4) + readsLevels(way.receivedFar(), way.line, exponents);
    script =
        script + (way.receivedFar() ? readsFarSnr(way.line, bands, Bytes(bands.back().last + size_t{1}, 104))
                                    : readsNearSnr(way.line, 50, {1, 1, 1, 1}, 100));
    return script + readsSet(way.line, bySentSet(way), bands);
  }
};

TEST_F(Noise, IsTheReceivedLevelMinusTheSnr) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    driver_.expect(readsNoise(way, {{50, 51}, {53, 53}}, {5, 10, 11, 8}));
    EXPECT_EQ(get(way, bytes_), QVR_E_STATUS_OK);
    // Levels of -65.6, -95.7 and -83.6 dBm/Hz, so noise of -85.6, -115.7 and -103.6 dBm/Hz.
    for (uint32_t tone = 0; tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
      const int expected = tone == 50 ? 106 : tone == 51 ? 166 : tone == 53 ? 142 : 255;
      ASSERT_EQ(bytes_[tone], expected) << tone;
    }
    EXPECT_EQ(bytes_[50], -2 * std::round(levelOf(5, 50) - 20 + 33));
    driver_.verify();
  }
}

TEST_F(Noise, IsLimitedToTheEncoding) {
  // Noise of -20 and -176.2 dBm/Hz, and no noise at all.
  driver_.expect(findsTones(0, 50, 3) + readsLevels(false, 0, {0xF8, 18, 0}) +
                 readsNearSnr(0, 50, {1, 1, 0}, 1000) + readsSet(0, true, {{50, 52}}));
  EXPECT_EQ(QVR_getLineStatusALNpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[50], 0);
  EXPECT_EQ(bytes_[51], 254);
  EXPECT_EQ(bytes_[52], 254);
}

TEST_F(Noise, HasNoValueForNaN) {
  driver_.expect(findsTones(0, 50, 2) + readsLevels(false, 0, {5, 5}) + readsNearSnr(0, 50, {0, 1}, 0) +
                 readsSet(0, true, {{50, 51}}));
  EXPECT_EQ(QVR_getLineStatusALNpsus(0, bytes_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_[50], 255);
  EXPECT_EQ(bytes_[51], 0);  // no signal, only noise
}

TEST_F(Noise, ReturnsTheCodeOfEachFailedRequest) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    expectEachFailureAnswered(
        [&] {
          return readsNoise(way, {{50, 53}}, {5, 5, 5, 5});
        },
        [&](bool& untouched) {
          const QVR_retval_t status = get(way, bytes_);
          untouched = bytesUntouched();
          return status;
        });
  }
}

// ---- HLOG ----

class Hlog : public TestParameters {
 protected:
  static QVR_retval_t get(const Way& way, G9972_HLOGps_t hlog) {
    return way.upstream ? QVR_getLineStatusHLOGpsus(way.line, hlog)
                        : QVR_getLineStatusHLOGpsds(way.line, hlog);
  }

  // Both directions use the set that carries upstream.
  static bool bySentSet(const Way& way) { return way.line == kSubscriberSide; }

  // Four processed subcarriers from 50 on, sent at -70.2 dBm/Hz; the line driver raises that to -66.
  Script readsHlog(const Way& way, const std::vector<Band>& bands, const Bytes& exponents) {
    Script script =
        findsTones(way.line, 50, 4) + readsSent(!way.receivedFar(), way.line, {-7020, -7020, -7020, -7020});
    script = script + readsLevels(way.receivedFar(), way.line, exponents);
    return script + readsSet(way.line, bySentSet(way), bands);
  }
};

TEST_F(Hlog, IsTheReceivedLevelMinusTheSentLevel) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    driver_.expect(readsHlog(way, {{50, 51}, {53, 53}}, {6, 10, 11, 8}));
    EXPECT_EQ(get(way, hlog_), QVR_E_STATUS_OK);
    // Levels of -71.6, -95.7 and -83.6 dBm/Hz: gains of -5.6, -29.7 and -17.6 dB.
    for (uint32_t tone = 0; tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
      const int expected = tone == 50 ? 120 : tone == 51 ? 360 : tone == 53 ? 240 : 1023;
      ASSERT_EQ(hlog_[tone], expected) << tone;
    }
    EXPECT_EQ(hlog_[50], -10 * std::round(levelOf(6, 50) + 70.2 - 4.2 - 6));
    driver_.verify();
  }
}

TEST_F(Hlog, ReadsOnlyTheSetForGivenLevels) {
  driver_.expect(reads(1, 0xE2400000, framing(50, 3)));
  QVR_linePhyParams_t params{};
  ASSERT_EQ(QVR_getLinePhyParams(1, &params), QVR_E_STATUS_OK);
  const double sent[] = {-70.2, -70.2, -70.2};
  const double received[] = {-66.0, -100.4, -60.0};
  driver_.expect(readsSet(1, true, {{0, 2047}}));
  EXPECT_EQ(QVR_getLineStatusHLOGps(1, sent, received, hlog_), QVR_E_STATUS_OK);
  EXPECT_EQ(hlog_[49], 1023);
  EXPECT_EQ(hlog_[50], 60);
  EXPECT_EQ(hlog_[51], 400);
  EXPECT_EQ(hlog_[52], 0);
  EXPECT_EQ(hlog_[53], 1023);
  driver_.expect(readsSet(1, true, {}).fails(EIO));
  EXPECT_EQ(QVR_getLineStatusHLOGps(1, sent, received, hlog_), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(hlog_[50], 60);
}

TEST_F(Hlog, IsLimitedToTheEncodingAndNeverTheNoValueCode) {
  driver_.expect(reads(0, 0xE2400000, framing(0, 2048)));
  QVR_linePhyParams_t params{};
  ASSERT_EQ(QVR_getLinePhyParams(0, &params), QVR_E_STATUS_OK);
  std::vector<double> sent(2048, -4.2);
  std::vector<double> received(2048);
  received[0] = std::numeric_limits<double>::infinity();
  received[1] = -std::numeric_limits<double>::infinity();
  received[2] = 1e300;
  received[3] = -1e300;
  received[4] = 3282.6;
  received[5] = -3270.6;
  received[6] = 6.6;
  received[7] = std::numeric_limits<double>::quiet_NaN();
  for (size_t i = 8; i < received.size(); i++) {
    received[i] =
        -96 - (static_cast<double>(i) + 0.5) / 1000;  // around the value that would be encoded as 1023
  }
  driver_.expect(readsSet(0, false, {{0, 2047}}));
  EXPECT_EQ(QVR_getLineStatusHLOGps(0, sent.data(), received.data(), hlog_), QVR_E_STATUS_OK);
  const std::vector<int16_t> first(hlog_, hlog_ + 8);
  EXPECT_THAT(first, testing::ElementsAre(-32768, 32767, -32768, 32767, -32768, 32767, -10, 1023));
  for (size_t i = 8; i < received.size(); i++) {
    ASSERT_EQ(hlog_[i], i <= 499 ? 1020 : i < 1500 ? 1030 : 1040) << i;
  }
}

TEST_F(Hlog, HasNoValueWhereNothingIsSent) {
  driver_.expect(findsTones(0, 50, 2) + readsSent(true, 0, {0x8000, -7020}) + readsLevels(false, 0, {6, 6}) +
                 readsSet(0, false, {{50, 51}}));
  EXPECT_EQ(QVR_getLineStatusHLOGpsus(0, hlog_), QVR_E_STATUS_OK);
  EXPECT_EQ(hlog_[50], 1023);
  EXPECT_EQ(hlog_[51], 120);
}

TEST_F(Hlog, ReturnsTheCodeOfEachFailedRequest) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    expectEachFailureAnswered(
        [&] {
          return readsHlog(way, {{50, 53}}, {6, 6, 6, 6});
        },
        [&](bool& untouched) {
          const QVR_retval_t status = get(way, hlog_);
          untouched = hlogUntouched();
          return status;
        });
  }
}

auto logsError(const std::string& text) {
  return testing::MatchesRegex("\\[LOG_ERR\\] [A-Za-z_]+:[0-9]+ " + text);
}

TEST_F(Hlog, LogsWhichSignalCouldNotBeRead) {
  const TraceLog log;
  driver_.expect(readsIdentity(0, chipWithLine(LS_IDLE)));
  EXPECT_EQ(QVR_getLineStatusHLOGpsds(0, hlog_), QVR_E_ERROR);
  EXPECT_THAT(log.lines(), testing::ElementsAre(logsError("Failed reading TX signal \\(1\\)\n")));
  log.lines().clear();
  driver_.expect(findsTones(0, 50, 1) + readsSent(false, 0, {-7020}).fails(EIO));
  EXPECT_EQ(QVR_getLineStatusHLOGpsds(0, hlog_), QVR_E_MEMREAD_ERROR);
  EXPECT_THAT(log.lines(), testing::ElementsAre(logsError("Failed reading TX signal \\(12\\)\n")));
  log.lines().clear();
  driver_.expect(findsTones(0, 50, 1) + readsSent(true, 0, {-7020}) +
                 reads(0, 0xE4080000, Bytes(4)).fails(EIO));
  EXPECT_EQ(QVR_getLineStatusHLOGpsus(0, hlog_), QVR_E_MEMREAD_ERROR);
  EXPECT_THAT(log.lines(), testing::ElementsAre(logsError("Failed reading RX signal \\(12\\)\n")));
}

// ---- Signal attenuation ----

class Attenuation : public Hlog {
 protected:
  static QVR_retval_t get(const Way& way, G9972_SATN_t* attenuation) {
    return way.upstream ? QVR_getSignalAttenuationus(way.line, attenuation)
                        : QVR_getSignalAttenuationds(way.line, attenuation);
  }

  Script readsAttenuation(const Way& way, const std::vector<int>& amplitudes, const std::vector<Band>& bands,
                          const Bytes& exponents) {
    const Script hlog = readsHlog(way, bands, exponents);
    return hlog + readsFarEndPieces(way.line, 0xE4240000, littleEndian16(amplitudes));
  }

  G9972_SATN_t attenuation_ = -7777;
};

TEST_F(Attenuation, IsTheRatioOfSentToReceivedPower) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    // Losses of 6, 30 and 18 dB: (1 + 4 + 1/4) / (10^-0.6 + 4 * 10^-3 + 1/4 * 10^-1.8) = 20.26
    driver_.expect(readsAttenuation(way, {16384, 32768, 0, 8192}, {{50, 53}}, {6, 10, 11, 8}));
    EXPECT_EQ(get(way, &attenuation_), QVR_E_STATUS_OK);
    EXPECT_EQ(attenuation_, 131);
    driver_.verify();
  }
}

TEST_F(Attenuation, EqualsTheLossThatAllSubcarriersShare) {
  driver_.expect(readsAttenuation(kWays[0], {100, 200, 300, 400}, {{50, 53}}, {10, 10, 10, 10}));
  EXPECT_EQ(QVR_getSignalAttenuationds(0, &attenuation_), QVR_E_STATUS_OK);
  EXPECT_EQ(attenuation_, 300);
}

TEST_F(Attenuation, IgnoresSubcarriersWithoutHlogOrAmplitude) {
  driver_.expect(
      readsAttenuation(kWays[0], {16384, 16384, 0, 16384}, {{50, 50}, {52, 53}}, {10, 0xF0, 0xF0, 10}));
  EXPECT_EQ(QVR_getSignalAttenuationds(0, &attenuation_), QVR_E_STATUS_OK);
  EXPECT_EQ(attenuation_, 300);
}

TEST_F(Attenuation, IsNotAvailableWithoutSubcarriers) {
  driver_.expect(readsAttenuation(kWays[0], {0, 0, 0, 0}, {{50, 53}}, {6, 6, 6, 6}));
  EXPECT_EQ(QVR_getSignalAttenuationds(0, &attenuation_), QVR_E_DATA_NOT_AVAILABLE);
  driver_.expect(readsAttenuation(kWays[0], {1, 1, 1, 1}, {}, {6, 6, 6, 6}));
  EXPECT_EQ(QVR_getSignalAttenuationds(0, &attenuation_), QVR_E_DATA_NOT_AVAILABLE);
  EXPECT_EQ(attenuation_, -7777);
}

TEST_F(Attenuation, FitsTheEncodingForTheGreatestLossAndGain) {
  // Coefficients of 2^127 are a loss of 734 dB, those of 2^-16 a gain of 127 dB.
  driver_.expect(readsAttenuation(kWays[1], {1, 1, 1, 1}, {{50, 53}}, {127, 127, 127, 127}));
  EXPECT_EQ(QVR_getSignalAttenuationus(0, &attenuation_), QVR_E_STATUS_OK);
  EXPECT_EQ(attenuation_, 10 * -std::round(levelOf(127, 50) + 70.2 - 4.2 - 6) - 60);
  driver_.expect(readsAttenuation(kWays[1], {1, 1, 1, 1}, {{50, 53}}, {0xF0, 0xF0, 0xF0, 0xF0}));
  EXPECT_EQ(QVR_getSignalAttenuationus(0, &attenuation_), QVR_E_STATUS_OK);
  EXPECT_EQ(attenuation_, 10 * -std::round(levelOf(-16, 50) + 70.2 - 4.2 - 6) - 60);
}

TEST_F(Attenuation, ReturnsTheCodeOfEachFailedRequest) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    expectEachFailureAnswered(
        [&] {
          return readsAttenuation(way, {1, 1, 1, 1}, {{50, 53}}, {6, 6, 6, 6});
        },
        [&](bool& untouched) {
          const QVR_retval_t status = get(way, &attenuation_);
          untouched = attenuation_ == -7777;
          return status;
        });
  }
}

TEST_F(Attenuation, LogsWhatCouldNotBeRead) {
  const TraceLog log;
  driver_.expect(readsIdentity(0, chipWithLine(LS_IDLE)));
  EXPECT_EQ(QVR_getSignalAttenuationds(0, &attenuation_), QVR_E_ERROR);
  EXPECT_THAT(log.lines(), testing::ElementsAre(logsError("Failed reading TX signal \\(1\\)\n"),
                                                logsError("Failed reading HLOG \\(1\\)\n")));
  log.lines().clear();
  const Script hlog = readsHlog(kWays[0], {{50, 53}}, {6, 6, 6, 6});
  const uint16_t refused = ++sequence_;
  driver_.expect(hlog + asksFarEndMemory(0, refused, 0xE4240000, 8, farEndHeader(0xFFFF, 0, refused, 0)));
  EXPECT_EQ(QVR_getSignalAttenuationds(0, &attenuation_), QVR_E_FAREND_EOC_NACK);
  EXPECT_THAT(log.lines(), testing::ElementsAre(logsError("Failed reading far-end TX Signal \\(40\\)\n")));
}

// ---- Every getter ----

TEST_F(TestParameters, RefuseLinesThatAreDownAndInvalidLines) {
  using Getter = QVR_retval_t (*)(QVR_lineId_t line, uint8_t * values);
  for (const Getter get : {QVR_getLineStatusBITSpsds, QVR_getLineStatusBITSpsus, QVR_getLineStatusBITSRMCpsds,
                           QVR_getLineStatusBITSRMCpsus, QVR_getLineStatusSNRpsds, QVR_getLineStatusSNRpsus,
                           QVR_getLineStatusALNpsds, QVR_getLineStatusALNpsus}) {
    driver_.expect(readsIdentity(1, chipWithLine(LS_SILENT)));
    EXPECT_EQ(get(1, bytes_), QVR_E_ERROR);
    EXPECT_TRUE(bytesUntouched());
    EXPECT_ASSERTION(get(2, bytes_), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
    EXPECT_ASSERTION(get(-1, bytes_), asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
  }
  for (const auto get : {QVR_getLineStatusHLOGpsds, QVR_getLineStatusHLOGpsus}) {
    driver_.expect(readsIdentity(1, chipWithLine(LS_SILENT)));
    EXPECT_EQ(get(1, hlog_), QVR_E_ERROR);
    EXPECT_TRUE(hlogUntouched());
    EXPECT_ASSERTION(get(2, hlog_), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  }
  for (const auto get : {QVR_getSignalAttenuationds, QVR_getSignalAttenuationus}) {
    G9972_SATN_t attenuation = 0;
    EXPECT_ASSERTION(get(2, &attenuation), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  }
  const double none = 0;
  EXPECT_ASSERTION(QVR_getLineStatusHLOGps(2, &none, &none, hlog_),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

}  // namespace
