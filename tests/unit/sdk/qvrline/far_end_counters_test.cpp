// The far end's counter blocks: read from its memory, completed by its answers and by counters of the near
// end.
#include "support/assertions.h"
#include "support/devices.h"
#include "support/far_end_answers.h"
#include "support/far_end_memory.h"
#include "support/lines.h"
#include "support/records.h"

using namespace gfast;

namespace {

constexpr uint32_t kFirst = 0x01020304;

// What a far end answers about itself, byte by byte.
const Bytes kManagement = countingWords(44, 0x0A0B0C01);

class FarEndCounters : public testing::Test {
 protected:
  void SetUp() override {
    enterBothLines();
    startDevice(driver_, 0, LS_SHOWTIME);
  }

  // Only the last step decides the result, so each step is tested good and bad.
  static Script step(const Script& good, bool fails) { return fails ? good.fails(EIO) : good; }

  // The next exchange over far-end memory.
  Script readsBlock(uint32_t address, size_t size, bool fails = false) {
    return step(readsFarEnd(0, ++sequence_, address, countingWords(size, kFirst)), fails);
  }

  ExpectedRequests driver_{Script()};
  uint16_t sequence_ = 0;
};

using ManagementCounters = FarEndCounters;
using PmdTestParameters = FarEndCounters;
using FarEndFramerRaw = FarEndCounters;
using FarEndFduRaw = FarEndCounters;
using FarEndDerived = FarEndCounters;

// Calls an operation with a block of its type, whatever the type.
template <typename Block, QVR_retval_t (*Read)(QVR_lineId_t, Block*)>
QVR_retval_t readInto(QVR_lineId_t line, bool& zero) {
  Block block;
  std::memset(&block, 0xAA, sizeof block);
  const QVR_retval_t status = Read(line, &block);
  zero = isZero(block);
  return status;
}

struct AnyReader {
  const char* name;
  QVR_retval_t (*read)(QVR_lineId_t line, bool& zero);
};

constexpr AnyReader kBlockReaders[] = {
    {"framer init", readInto<GFAST_FRAMER_INIT_COUNTERS_S, QVR_readGfastFramerInitCountersFE>},
    {"FDU init", readInto<GFAST_FDU_INIT_COUNTERS_S, QVR_readGfastFduInitCountersFE>},
    {"framer raw", readInto<GFAST_FRAMER_RAW_COUNTERS_S, QVR_readGfastFramerRawCountersFE>},
    {"FDU raw", readInto<GFAST_FDU_RAW_COUNTERS_S, QVR_readGfastFduRawCountersFE>},
    {"derived", readInto<GFAST_DERIVED_COUNTERS_S, QVR_readGfastDerivedCountersFE>},
};

constexpr AnyReader kAnswerReaders[] = {
    {"management", readInto<G9701_ManagementCounters_t, QVR_readFarEndFTUmanagementCounters>},
    {"PMD", readInto<G9701_PMDTestParameters_t, QVR_readFarEndPMDTestParameters>},
};

TEST_F(FarEndCounters, AreZeroWithoutARequestForALineThatIsDown) {
  for (const AnyReader& block : kBlockReaders) {
    SCOPED_TRACE(block.name);
    bool zero = false;
    driver_.expect(readsIdentity(0, chipWithLine(LS_INIT_TRAIN)));
    EXPECT_EQ(block.read(0, zero), QVR_E_ERROR);
    EXPECT_TRUE(zero);
    driver_.verify();
  }
}

TEST_F(FarEndCounters, AreZeroWhenTheDeviceDoesNotAnswer) {
  const Script finds = findsLineUp(0);
  for (const AnyReader& block : kBlockReaders) {
    for (size_t position = 0; position < finds.size(); position++) {
      SCOPED_TRACE(block.name);
      bool zero = false;
      driver_.expect(finds.failingAt(position, EIO));
      EXPECT_EQ(block.read(0, zero), QVR_E_ERROR);
      EXPECT_TRUE(zero);
      driver_.verify();
    }
  }
}

TEST_F(FarEndCounters, AreZeroWhenTheDeviceCannotBeOpened) {
  for (const AnyReader& block : kBlockReaders) {
    SCOPED_TRACE(block.name);
    bool zero = false;
    driver_.expect(opens(1).fails(ENOENT));
    EXPECT_EQ(block.read(1, zero), QVR_E_ERROR);
    EXPECT_TRUE(zero);
  }
  for (const AnyReader& answer : kAnswerReaders) {
    SCOPED_TRACE(answer.name);
    bool zero = false;
    driver_.expect(opens(1).fails(ENOENT));
    EXPECT_EQ(answer.read(1, zero), QVR_E_FAILED_SENDING_FAR_END_MSG);
    EXPECT_TRUE(zero);
  }
}

template <size_t Count>
void expectNoDevice(const AnyReader (&readers)[Count]) {
  for (const AnyReader& reader : readers) {
    SCOPED_TRACE(reader.name);
    bool zero = false;
    EXPECT_EQ(reader.read(1, zero), QVR_E_NO_DEVICE_FOR_LINE);
    EXPECT_TRUE(zero);
    EXPECT_ASSERTION(reader.read(2, zero), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
    EXPECT_ASSERTION(reader.read(-1, zero), asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
  }
}

TEST_F(FarEndCounters, FailForALineWithoutADeviceAndAssertOnAnUnknownLine) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  expectNoDevice(kBlockReaders);
  expectNoDevice(kAnswerReaders);
}

TEST_F(FarEndCounters, OfInitialisationAreReadFromFarEndMemory) {
  GFAST_FRAMER_INIT_COUNTERS_S framer;
  driver_.expect(findsLineUp(0) + readsBlock(0xE2400000, 72));
  EXPECT_EQ(QVR_readGfastFramerInitCountersFE(0, &framer), QVR_E_STATUS_OK);
  expectCountingWords(framer, kFirst);
  GFAST_FDU_INIT_COUNTERS_S fdu;
  driver_.expect(findsLineUp(0) + readsBlock(0xE2000000, 52));
  EXPECT_EQ(QVR_readGfastFduInitCountersFE(0, &fdu), QVR_E_STATUS_OK);
  expectCountingWords(fdu, kFirst);
}

TEST_F(FarEndCounters, FarEndAddressIsTheSameForEveryLine) {
  addLine(1, 1, 0, FALSE);
  startDevice(driver_, 1, LS_SHOWTIME);
  GFAST_FRAMER_INIT_COUNTERS_S framer;
  driver_.expect(findsLineUp(1) + readsFarEnd(1, 1, 0xE2400000, countingWords(72, kFirst)));
  EXPECT_EQ(QVR_readGfastFramerInitCountersFE(1, &framer), QVR_E_STATUS_OK);
  expectCountingWords(framer, kFirst);
}

// The device has one line, with the index 0.
TEST_F(FarEndCounters, OfManagementAreNotAskedOverALineThatItsDeviceDoesNotHave) {
  addLine(0, 0, 1, TRUE);
  G9701_ManagementCounters_t counters;
  EXPECT_NE(QVR_readFarEndFTUmanagementCounters(0, &counters), QVR_E_STATUS_OK);
}

TEST_F(FarEndCounters, OfInitialisationAreZeroWhenTheFarEndFails) {
  struct Failure {
    Script exchange;
    QVR_retval_t status;
  };
  const auto answered = [&](const Bytes& answer) {
    return asksFarEndMemory(0, ++sequence_, 0xE2400000, 72, answer);
  };
  Bytes tooShort = readAnswer(2, 0xE2400000, countingWords(72, kFirst));
  tooShort.pop_back();
  const std::vector<Failure> failures{
      {answered(farEndHeader(0xFFFF, 0, 1, 0)), QVR_E_FAREND_EOC_NACK},
      {answered(tooShort), QVR_E_FAILED_GETTING_FE_DATA},
      {answered({}), QVR_E_FAILED_GETTING_FE_DATA},
      {answered({}).fails(ETIMEDOUT), QVR_E_FAILED_SENDING_FAR_END_MSG},
  };
  for (const Failure& failure : failures) {
    GFAST_FRAMER_INIT_COUNTERS_S framer;
    std::memset(&framer, 0xAA, sizeof framer);
    driver_.expect(findsLineUp(0) + failure.exchange);
    EXPECT_EQ(QVR_readGfastFramerInitCountersFE(0, &framer), failure.status);
    EXPECT_TRUE(isZero(framer));
  }
}

TEST_F(ManagementCounters, AreElevenLittleEndianWords) {
  G9701_ManagementCounters_t counters;
  driver_.expect(asksManagement(0, kManagement));
  EXPECT_EQ(QVR_readFarEndFTUmanagementCounters(0, &counters), QVR_E_STATUS_OK);
  expectCountingWords(counters, 0x0A0B0C01);
  EXPECT_EQ(counters.fec, 0x0A0B0C01U);
  EXPECT_EQ(counters.errorFreeBitsCounter, 0x0A0B0C0BU);
}

TEST_F(PmdTestParameters, AreLittleEndianAndPacked) {
  G9701_PMDTestParameters_t parameters;
  driver_.expect(asksPmd(0));
  EXPECT_EQ(QVR_readFarEndPMDTestParameters(0, &parameters), QVR_E_STATUS_OK);
  EXPECT_EQ(uint16_t{parameters.SNRM}, 0x1234);
  EXPECT_EQ(uint32_t{parameters.ATTNDR}, 0x92345678U);
  EXPECT_EQ(uint16_t{parameters.nearEnd_ACTATP}, 0xABCD);
  EXPECT_EQ(uint16_t{parameters.farEnd_INP_act_shine}, 0x0304);
  EXPECT_EQ(uint16_t{parameters.farEnd_actualSNRM_RMC}, 0xF102);
  EXPECT_EQ(uint16_t{parameters.RXpower_dBm_DS}, 0x0607);
}

TEST_F(FarEndCounters, RejectAnAnswerTooShortForItsRecord) {
  for (size_t length = 0; length < kManagement.size(); length++) {
    bool zero = false;
    driver_.expect(asksManagement(0, Bytes(length, 0x55)));
    EXPECT_EQ(kAnswerReaders[0].read(0, zero), QVR_E_FAILED_SENDING_FAR_END_MSG) << length;
    EXPECT_TRUE(zero) << length;
  }
  for (size_t length = 0; length < kPmd.size(); length++) {
    bool zero = false;
    driver_.expect(asksPmd(0, Bytes(length, 0x55)));
    EXPECT_EQ(kAnswerReaders[1].read(0, zero), QVR_E_FAILED_SENDING_FAR_END_MSG) << length;
    EXPECT_TRUE(zero) << length;
  }
}

TEST_F(FarEndCounters, FailWhenTheFarEndDoesNotAnswer) {
  bool zero = false;
  driver_.expect(asksManagement(0, kManagement).fails(ETIMEDOUT, 44) + asksPmd(0).fails(ETIMEDOUT, 14));
  EXPECT_EQ(kAnswerReaders[0].read(0, zero), QVR_E_FAILED_SENDING_FAR_END_MSG);
  EXPECT_TRUE(zero);
  EXPECT_EQ(kAnswerReaders[1].read(0, zero), QVR_E_FAILED_SENDING_FAR_END_MSG);
  EXPECT_TRUE(zero);
}

TEST_F(FarEndCounters, AnswersFailWithoutARequestForALineThatIsDown) {
  driver_.expect(readsIdentity(0, chipWithLine(LS_IDLE)));
  ASSERT_EQ(QVR_isLineUp(0), FALSE);
  for (const AnyReader& answer : kAnswerReaders) {
    bool zero = false;
    EXPECT_EQ(answer.read(0, zero), QVR_E_FAILED_SENDING_FAR_END_MSG);
    EXPECT_TRUE(zero);
  }
}

// The steps of a framer reading that fail, one bit each.
enum FramerStep : unsigned { kBlock = 1, kAnswers = 2, kNearEnd = 4, kMeasurements = 8, kAllSteps = 16 };

GFAST_FRAMER_RAW_COUNTERS_S expectedFramer(unsigned failing) {
  constexpr uint32_t kNear = 0x70000000;
  GFAST_FRAMER_RAW_COUNTERS_S framer{};
  if ((failing & kBlock) == 0) {
    for (uint32_t i = 0; i < sizeof framer / 4; i++) {
      const uint32_t word = kFirst + i;
      std::memcpy(reinterpret_cast<char*>(&framer) + size_t{i} * 4, &word, sizeof word);
    }
  }
  if ((failing & kAnswers) == 0) {
    framer.rtxuc = 0x0A0B0C03;
    framer.numOfRetTxDTUs = 0x0A0B0C04;
  }
  if ((failing & kNearEnd) == 0) {
    framer.sraRxExngCnt = kNear + 42;
    framer.sraTxExngCnt = kNear + 41;
    framer.fraRxExngCnt = kNear + 44;
    framer.fraTxExngCnt = kNear + 43;
    framer.bitswapRxExngCnt = kNear + 56;
    framer.bitswapTxExngCnt = kNear + 56;
    framer.rpaRxExngCnt = kNear + 78;
    framer.rpaTxExngCnt = kNear + 77;
  }
  if ((failing & kMeasurements) == 0) {
    framer.snrMargin = 0x1234;
    framer.attainableNdr = 0x92345678;
    framer.rmcSnrMargin = 0xF102;
  }
  return framer;
}

TEST_F(FarEndFramerRaw, EachStepFailsAloneAndTheLastStepDecidesTheResult) {
  for (unsigned failing = 0; failing < kAllSteps; failing++) {
    SCOPED_TRACE(failing);
    driver_.expect(findsLineUp(0) + readsBlock(0xE2440000, 340, (failing & kBlock) != 0) +
                   step(asksManagement(0, kManagement), (failing & kAnswers) != 0) +
                   step(reads(0, 0xE2440000, countingWords(340, 0x70000000)), (failing & kNearEnd) != 0) +
                   step(asksPmd(0), (failing & kMeasurements) != 0));
    GFAST_FRAMER_RAW_COUNTERS_S framer;
    std::memset(&framer, 0xAA, sizeof framer);
    EXPECT_EQ(QVR_readGfastFramerRawCountersFE(0, &framer),
              (failing & kMeasurements) != 0 ? QVR_E_FAILED_SENDING_FAR_END_MSG : QVR_E_STATUS_OK);
    const GFAST_FRAMER_RAW_COUNTERS_S expected = expectedFramer(failing);
    for (size_t i = 0; i < sizeof framer / 4; i++) {
      EXPECT_EQ(wordOf(framer, i), wordOf(expected, i)) << "word " << i;
    }
    driver_.verify();
  }
}

TEST_F(FarEndFduRaw, EachStepFailsAloneAndTheLastStepDecidesTheResult) {
  for (const bool blockFails : {false, true}) {
    for (const bool pmdFails : {false, true}) {
      driver_.expect(findsLineUp(0) + readsBlock(0xE2040000, 40, blockFails) + step(asksPmd(0), pmdFails));
      GFAST_FDU_RAW_COUNTERS_S fdu;
      std::memset(&fdu, 0xAA, sizeof fdu);
      EXPECT_EQ(QVR_readGfastFduRawCountersFE(0, &fdu),
                pmdFails ? QVR_E_FAILED_SENDING_FAR_END_MSG : QVR_E_STATUS_OK);
      for (uint32_t i = 0; i < sizeof fdu / 4; i++) {
        const uint32_t read = blockFails ? 0 : kFirst + i;
        EXPECT_EQ(wordOf(fdu, i), i == 7 && !pmdFails ? 0xABCDU : read) << "word " << i;
      }
      driver_.verify();
    }
  }
}

TEST_F(FarEndFduRaw, PowerIsNotSignExtended) {
  driver_.expect(findsLineUp(0) + readsBlock(0xE2040000, 40) + asksPmd(0));
  GFAST_FDU_RAW_COUNTERS_S fdu;
  EXPECT_EQ(QVR_readGfastFduRawCountersFE(0, &fdu), QVR_E_STATUS_OK);
  EXPECT_EQ(fdu.ACTATPds, 0xABCD);
}

TEST_F(FarEndDerived, EachStepFailsAloneAndTheLastStepDecidesTheResult) {
  for (const bool blockFails : {false, true}) {
    for (const bool managementFails : {false, true}) {
      driver_.expect(findsLineUp(0) + readsBlock(0xE2880000, 216, blockFails) +
                     step(asksManagement(0, kManagement), managementFails));
      GFAST_DERIVED_COUNTERS_S derived;
      std::memset(&derived, 0xAA, sizeof derived);
      EXPECT_EQ(QVR_readGfastDerivedCountersFE(0, &derived),
                managementFails ? QVR_E_FAILED_SENDING_FAR_END_MSG : QVR_E_STATUS_OK);
      GFAST_DERIVED_COUNTERS_S expected{};
      if (!blockFails) {
        const Bytes block = countingWords(sizeof expected, kFirst);
        std::memcpy(&expected, block.data(), sizeof expected);
        QVR_NTOHGfastCounters(&expected, sizeof expected);
      }
      if (!managementFails) {
        expected.erroredSeconds = 0x0A0B0C05;
        expected.severlyErroredSeconds = 0x0A0B0C06;
        expected.lossOfSignalSeconds = 0x0A0B0C07;
        expected.lossOfRMCSeconds = 0x0A0B0C08;
        expected.unavailableSeconds = 0x0A0B0C09;
        expected.EFTR_min = 0x0A0B0C0A;
        expected.errorFreeBits = 0x0A0B0C0B;
      }
      for (size_t i = 0; i < sizeof derived / 4; i++) {
        EXPECT_EQ(wordOf(derived, i), wordOf(expected, i)) << "word " << i;
      }
      driver_.verify();
    }
  }
}

}  // namespace
