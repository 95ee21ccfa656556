// SNR of each subcarrier: noise energies at the near end, read through a window; answers of the far end,
// block by block.

#include <gfast_api.h>

#include <cstring>

#include "chip/registers.h"
#include "qvrline/snr_tables.h"
#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

constexpr uint32_t kWindow = 0xE4180000;

// An SNR table that shows which entries were filled.
class SnrTables : public ToneTest {
 protected:
  void SetUp() override {
    ToneTest::SetUp();
    clear();
  }

  void clear() { std::fill_n(snr_, QVR_MAX_NUMBER_OF_TONES, -99.0F); }
  size_t filled() const {
    return static_cast<size_t>(
        std::count_if(snr_, snr_ + QVR_MAX_NUMBER_OF_TONES, [](float snr) { return !(snr == -99.0F); }));
  }

  static Script readsWindow(int device, uint32_t tone, const Bytes& bytes) {
    return reads(device, kWindow + 4 * tone, bytes);
  }

  // The energies from this subcarrier on, in as few requests as the window allows.
  static Script readsEnergies(int device, uint32_t firstTone, const std::vector<uint32_t>& energies) {
    Script script;
    for (uint32_t done = 0; done < energies.size(); done += 220) {
      const size_t end = std::min<size_t>(done + 220, energies.size());
      script = script +
               readsWindow(device, firstTone + done, window({energies.data() + done, energies.data() + end}));
    }
    return script;
  }

  static Script readsTable(int device, uint32_t firstTone, const std::vector<uint32_t>& energies,
                           uint32_t windowSize = 1, uint32_t scale = 0) {
    return findsTones(device, firstTone, static_cast<uint32_t>(energies.size())) +
           readsEnergies(device, firstTone, energies) + readsScaling(device, windowSize, scale);
  }

  QVR_SNRTBL_t snr_;
};

using NearEndSnr = SnrTables;

TEST_F(NearEndSnr, IsWindowSizeOverEnergyInDecibels) {
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    clear();
    driver_.expect(readsTable(line, 43, {1, 10, 1000, 0xFFFFFFFF}, 100, 10));
    EXPECT_EQ(QVR_readSNRTable(line, snr_), QVR_E_STATUS_OK);
    EXPECT_FLOAT_EQ(snr_[0], 20 + 30.103F);
    EXPECT_FLOAT_EQ(snr_[1], 10 + 30.103F);
    EXPECT_FLOAT_EQ(snr_[2], -10 + 30.103F);
    EXPECT_FLOAT_EQ(snr_[3], 20 + 30.103F - 96.3296F);
    EXPECT_EQ(filled(), 4U);
    driver_.verify();
  }
}

TEST_F(NearEndSnr, Reads220SubcarriersARequest) {
  std::vector<uint32_t> energies(1929);
  for (uint32_t i = 0; i < energies.size(); i++) {
    energies[i] = i + 1;
  }
  const Script script = readsTable(0, 43, energies);
  EXPECT_EQ(script.size(), 3U + 1 + 9 + 1);
  driver_.expect(script);
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 1929U);
  for (uint32_t i = 0; i < energies.size(); i++) {
    ASSERT_FLOAT_EQ(snr_[i], -10 * std::log10(static_cast<float>(i + 1))) << i;
  }
}

TEST_F(NearEndSnr, Reads220SubcarriersOnceAnd221Twice) {
  driver_.expect(readsTable(0, 0, std::vector<uint32_t>(220, 1)));
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 220U);
  const Script two = readsTable(0, 1827, std::vector<uint32_t>(221, 1));
  EXPECT_EQ(two.size(), 3U + 1 + 2 + 1);
  driver_.expect(two);
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 221U);
}

TEST_F(NearEndSnr, ReadsNothingPastTheGrid) {
  driver_.expect(findsTones(0, 2040, 1000) + readsEnergies(0, 2040, std::vector<uint32_t>(8, 1)) +
                 readsScaling(0, 1, 0) + findsTones(0, 0xFFFFFFFF, 5) + readsScaling(0, 1, 0) +
                 findsTones(0, 43, 0) + readsScaling(0, 1, 0));
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 8U);
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 8U);
}

TEST_F(NearEndSnr, IsReadAgainUntilTheGuardWordsAreEqualAndNotZero) {
  driver_.expect(findsTones(0, 43, 1) + readsWindow(0, 43, window({5}, 7, 8)) +
                 readsWindow(0, 43, window({5}, 0, 0)) + readsWindow(0, 43, window({5}, 0, 7)) +
                 readsWindow(0, 43, window({1}, 8, 8)) + readsScaling(0, 1, 0));
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(snr_[0], 0.0F);
}

TEST_F(NearEndSnr, SucceedsWhenTheGuardWordsAgreeAtTheLastTry) {
  driver_.expect(findsTones(0, 43, 221) +
                 readsWindow(0, 43, window(std::vector<uint32_t>(220, 1), 1, 2)).times(49) +
                 readsWindow(0, 43, window(std::vector<uint32_t>(220, 1))) +
                 readsWindow(0, 263, window({1}, 1, 2)).times(49) + readsWindow(0, 263, window({1})) +
                 readsScaling(0, 1, 0));
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 221U);
}

TEST_F(NearEndSnr, FailsAfter50TriesWithoutValidGuardWords) {
  for (const Bytes& unsettled : {window({1}, 1, 2), window({1}, 0, 0)}) {
    driver_.expect(findsTones(0, 43, 1) + readsWindow(0, 43, unsettled).times(50));
    EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_ERROR);
    EXPECT_EQ(filled(), 0U);
    driver_.verify();
  }
}

TEST_F(NearEndSnr, IsInfiniteWithoutNoiseAndNaNWithoutAMeasurement) {
  driver_.expect(readsTable(0, 43, {0, 1}, 1, 0) + readsTable(0, 43, {0, 1}, 0, 0) +
                 readsTable(0, 43, {1}, 1, 0xFFFFFFFF));
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(snr_[0], std::numeric_limits<float>::infinity());
  EXPECT_EQ(snr_[1], 0.0F);
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_TRUE(std::isnan(snr_[0]));
  EXPECT_EQ(snr_[1], -std::numeric_limits<float>::infinity());
  EXPECT_EQ(QVR_readSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(snr_[0], std::numeric_limits<float>::infinity());
}

TEST_F(NearEndSnr, FailsAndFillsNothingWhenAnyRequestFails) {
  expectEachFailureAnswered([] { return readsTable(0, 43, std::vector<uint32_t>(450, 1)); },
                            [&](bool& untouched) {
                              const QVR_retval_t status = QVR_readSNRTable(0, snr_);
                              untouched = filled() == 0;
                              return status;
                            });
}

TEST_F(NearEndSnr, IsReadAtTheLinesIndexOnItsDevice) {
  addLine(0, 1, 3, TRUE);
  const LineInShowtime line{0, QVR_lineDescriptorForLine(0), {43, 1}};
  driver_.expect(reads(1, 0xE4D80000 + 4 * 43, Bytes(12)).fails(EIO));
  EXPECT_EQ(readSnr(line, LineEnd::kNear, snr_), QVR_E_ERROR);
}

TEST_F(SnrTables, FailForALineThatIsDownOrHasNoDevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  for (const auto read : {QVR_readSNRTable, QVR_readFarEndSNRTable}) {
    driver_.expect(readsIdentity(0, chipWithLine(LS_IDLE)));
    EXPECT_EQ(read(0, snr_), QVR_E_ERROR);
    EXPECT_EQ(read(1, snr_), QVR_E_ERROR);
    EXPECT_ASSERTION(read(-1, snr_), asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
  }
  EXPECT_EQ(filled(), 0U);
}

class FarEndSnr : public SnrTables {
 protected:
  static Script findsSet(int device, const std::vector<Band>& bands) {
    return findsTones(device, 43, 1929) + reads(device, kSentSet, medleySet(bands));
  }
};

TEST_F(FarEndSnr, RequestHasTheExactBytes) {
  const Bytes request{4, 0, 0, 100, 0};
  Bytes answer(2 + 101, 0x50);
  answer[0] = answer[1] = 0xFF;  // the measurement time
  driver_.expect(findsSet(0, {{100, 100}}) +
                 sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, request, 103, answer));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(snr_[0], 8.0F);
  EXPECT_EQ(filled(), 1U);
}

// The device has one line, with the index 0.
TEST_F(FarEndSnr, IsNotAskedOverALineThatItsDeviceDoesNotHave) {
  addLine(0, 0, 1, TRUE);
  const LineInShowtime line{0, QVR_lineDescriptorForLine(0), {43, 1}};
  driver_.expect(reads(0, 0xE6180000, medleySet({{0, 9}})));
  EXPECT_EQ(readSnr(line, LineEnd::kFar, snr_), QVR_E_LINE_NOT_ACTIVE);
}

TEST_F(FarEndSnr, IsReadFromSubcarrier0InBlocksOf248AndStoredFromTheLowest) {
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    clear();
    Bytes values(1972);
    for (size_t tone = 0; tone < values.size(); tone++) {
      values[tone] = static_cast<uint8_t>(tone % 251);
    }
    const Script script = findsSet(line, {{43, 100}, {300, 1971}}) + asksFarEndSnr(line, values);
    EXPECT_EQ(script.size(), 3U + 1 + 1 + 8);
    driver_.expect(script);
    EXPECT_EQ(QVR_readFarEndSNRTable(line, snr_), QVR_E_STATUS_OK);
    EXPECT_EQ(filled(), 1929U);
    for (uint32_t tone = 43; tone <= 1971; tone++) {
      ASSERT_EQ(snr_[tone - 43], values[tone] * 0.5F - 32) << tone;
    }
    driver_.verify();
  }
}

TEST_F(FarEndSnr, BelowTheSetIsReadAndNotStored) {
  driver_.expect(findsSet(0, {{496, 497}}) + asksFarEndSnr(0, Bytes(498, 0x40)));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(snr_[0], 0.0F);
  EXPECT_EQ(snr_[1], 0.0F);
  EXPECT_EQ(filled(), 2U);
}

TEST_F(FarEndSnr, NoExchangeFollowsAFullLastBlock) {
  driver_.expect(findsSet(0, {{0, 247}}) + asksFarEndSnr(0, Bytes(248, 2)) + findsSet(0, {{0, 248}}) +
                 asksFarEndSnr(0, Bytes(249, 2)) + findsSet(0, {{0, 2047}}) +
                 asksFarEndSnr(0, Bytes(2048, 2)) + findsSet(0, {{0, 0}}) + asksFarEndSnr(0, Bytes(1, 2)));
  for (const size_t count : {248U, 249U, 2048U}) {
    EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
    EXPECT_EQ(filled(), count);
  }
  clear();
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 1U);
}

TEST_F(FarEndSnr, MakesNoExchangeForAnEmptySet) {
  driver_.expect(findsSet(0, {}));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 0U);
}

TEST_F(FarEndSnr, IsNaNWhereTheFarEndHasNoValue) {
  driver_.expect(findsSet(0, {{0, 2}}) + asksFarEndSnr(0, {254, 255, 0}));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(snr_[0], 95.0F);
  EXPECT_TRUE(std::isnan(snr_[1]));
  EXPECT_EQ(snr_[2], -32.0F);
}

TEST_F(FarEndSnr, FailsAtOnceWhenTheFarEndRefuses) {
  const Bytes refusal{0xFF};
  driver_.expect(findsSet(0, {{0, 400}}) + asksSnrBlock(0, 0, 247, refusal));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_FAREND_EOC_NACK);
  EXPECT_EQ(filled(), 0U);
  driver_.expect(findsSet(0, {{0, 400}}) + asksFarEndSnr(0, Bytes(248, 2)) +
                 asksSnrBlock(0, 248, 400, refusal));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_FAREND_EOC_NACK);
  EXPECT_EQ(filled(), 248U);
}

TEST_F(FarEndSnr, ReadsAFailedBlockAgain) {
  const Bytes whole = Bytes(250, 0x40);
  const Script lost = asksSnrBlock(0, 0, 247, whole).fails(ETIMEDOUT);
  const Script cut = asksSnrBlock(0, 0, 247, Bytes(249, 0x40));
  const Script empty = asksSnrBlock(0, 0, 247, {});
  const Script notARefusal = asksSnrBlock(0, 0, 247, {0xFE}) + asksSnrBlock(0, 0, 247, {0xFF, 0xFF});
  driver_.expect(findsSet(0, {{0, 247}}) + lost + cut + empty + notARefusal + lost.times(4) +
                 asksSnrBlock(0, 0, 247, whole));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 248U);
}

TEST_F(FarEndSnr, FailsAfterTenFailuresOfABlock) {
  driver_.expect(findsSet(0, {{0, 9}}) + asksSnrBlock(0, 0, 9, Bytes(12)).fails(ETIMEDOUT).times(10));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_FAILED_SENDING_FAR_END_MSG);
  driver_.expect(findsSet(0, {{0, 9}}) + asksSnrBlock(0, 0, 9, Bytes(11)).times(10));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_FAILED_GETTING_FE_DATA);
  EXPECT_EQ(filled(), 0U);
}

TEST_F(FarEndSnr, CountsTriesForEachBlock) {
  Bytes second(2 + 10, 0x40);
  driver_.expect(findsSet(0, {{0, 257}}) + asksSnrBlock(0, 0, 247, {}).times(9) +
                 asksFarEndSnr(0, Bytes(248, 2)) + asksSnrBlock(0, 248, 257, {}).times(9) +
                 asksSnrBlock(0, 248, 257, second));
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr_), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(), 258U);
}

TEST_F(FarEndSnr, FailsWhenAnyRequestFails) {
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    expectEachFailureAnswered(
        [&] {
          return findsSet(line, {{300, 600}}) + asksFarEndSnr(line, Bytes(601, 0x40));
        },
        [&](bool& untouched) {
          clear();
          const QVR_retval_t status = QVR_readFarEndSNRTable(line, snr_);
          untouched = filled() < 301;
          return status;
        });
  }
}

// Reports so many copied bytes more than were asked for.
class Claims final : public Driver {
 public:
  explicit Claims(uint32_t more) : more_(more) { installDriver(*this); }

  int open(int device) override { return device; }
  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCFARENDMSG) {
      asked++;
      request.req_u.farendmsg.datalen_copied_to_user = request.req_u.farendmsg.bufsize + more_;
      return 0;
    }
    gfast_memread& record = request.req_u.memread;
    std::memset(record.buf, 0, record.bufsize);
    if (record.hw_mem_addr == VIRT_ADDR_B0_REGS) {
      store_le32(record.buf + B0_REGS_LINK_STATES, LS_SHOWTIME);
    }
    if (record.hw_mem_addr == kSentSet) {
      const Bytes set = medleySet({{0, 9}});
      std::copy(set.begin(), set.end(), record.buf);
    }
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  int asked = 0;

 private:
  uint32_t more_;
};

TEST(FarEndSnrThroughADriver, RejectsCopiedLengthBeyondBuffer) {
  enterBothLines();
  QVR_SNRTBL_t snr;
  for (const uint32_t more : {1U, 0x7FFFFFFFU, 0xFFFFFFF0U}) {
    const Claims driver(more);
    EXPECT_EQ(QVR_readFarEndSNRTable(0, snr), QVR_E_FAILED_GETTING_FE_DATA);
    EXPECT_EQ(driver.asked, 10);
  }
  const Claims driver(0);
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr), QVR_E_STATUS_OK);
  EXPECT_EQ(driver.asked, 1);
}

}  // namespace
