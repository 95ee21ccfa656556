// The counter blocks at the near end: their addresses and sizes, and how their bytes are converted.
#include <cstring>
#include <functional>

#include "support/assertions.h"
#include "support/devices.h"
#include "support/lines.h"
#include "support/records.h"

using namespace gfast;

namespace {

constexpr uint32_t kFirstWord = 0x01020304;  // no byte alike, so a wrong byte order shows

// An operation that reads a block, with the block's size and its address for line index 0.
struct Reader {
  const char* name;
  uint32_t address;
  size_t size;
  bool clearedOnFailure;
  // Takes what the block holds before the read, and returns in its place what it holds after.
  std::function<QVR_retval_t(QVR_lineId_t line, Bytes& block)> read;
};

template <typename Block>
Reader reader(const char* name, uint32_t address, size_t size,
              QVR_retval_t (*operation)(QVR_lineId_t, Block*), bool clearedOnFailure = false) {
  return {name, address, size, clearedOnFailure, [operation](QVR_lineId_t line, Bytes& bytes) {
            Block block;
            EXPECT_EQ(bytes.size(), sizeof block);
            std::memcpy(&block, bytes.data(), sizeof block);
            const QVR_retval_t status = operation(line, &block);
            std::memcpy(bytes.data(), &block, sizeof block);
            return status;
          }};
}

const std::vector<Reader>& readers() {
  static const std::vector<Reader> all{
      reader("framer init", 0xE2400000, 72, QVR_readGfastFramerInitCounters),
      reader("FDU init", 0xE2000000, 52, QVR_readGfastFduInitCounters),
      reader("framer raw", 0xE2440000, 340, QVR_readGfastFramerRawCounters),
      reader("FDU raw", 0xE2040000, 40, QVR_readGfastFduRawCounters),
      reader("derived", 0xE2880000, 216, QVR_readGfastDerivedCounters),
      reader("ETR database", 0xE5002000, 68, QVR_readGfastETRdbCounters),
      reader("performance monitoring", 0xF0000000, 156, QVR_readPerformanceMonitoringCounters, true),
  };
  return all;
}

uint32_t valueAt(const Bytes& block, size_t word) {
  uint32_t value = 0;
  std::memcpy(&value, &block[word * 4], sizeof value);
  return value;
}

TEST(CounterWords, AreLittleEndianInChipMemory) {
  const uint8_t chipBytes[] = {0x78, 0x56, 0x34, 0x12, 0xFF, 0, 0, 0, 0, 0, 0, 0x80};
  uint32_t words[3];
  std::memcpy(words, chipBytes, sizeof words);
  QVR_NTOHGfastCounters(words, sizeof words);
  EXPECT_THAT(words, testing::ElementsAre(0x12345678U, 0xFFU, 0x80000000U));
}

TEST(CounterWords, KeepBytesBehindTheLastWholeWord) {
  uint8_t bytes[] = {4, 3, 2, 1, 4, 3, 2};
  QVR_NTOHGfastCounters(bytes, sizeof bytes);
  EXPECT_EQ(Bytes(bytes + 4, bytes + 7), (Bytes{4, 3, 2}));
  uint32_t first = 0;
  std::memcpy(&first, bytes, sizeof first);
  EXPECT_EQ(first, 0x01020304U);
  QVR_NTOHGfastCounters(nullptr, 0);
}

TEST(CounterBlocks, AreReadFromTheDeviceOfTheLineInOneRequest) {
  enterBothLines();
  ExpectedRequests driver{Script()};
  openDevice(driver, 0);
  openDevice(driver, 1);
  for (const Reader& block : readers()) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      SCOPED_TRACE(block.name);
      driver.expect(reads(line, block.address, countingWords(block.size, kFirstWord)));
      Bytes bytes(block.size, 0xAA);
      EXPECT_EQ(block.read(line, bytes), QVR_E_STATUS_OK);
      for (uint32_t i = 0; i < block.size / 4; i++) {
        EXPECT_EQ(valueAt(bytes, i), kFirstWord + i) << "word " << i;
      }
      driver.verify();
    }
  }
}

TEST(CounterBlocks, AddressDependsOnTheLineIndex) {
  addLine(0, 1, 2, TRUE);
  ExpectedRequests driver{Script()};
  openDevice(driver, 1);
  for (const Reader& block : readers()) {
    SCOPED_TRACE(block.name);
    driver.expect(reads(1, block.address | 2U << 20, Bytes(block.size)));
    Bytes bytes(block.size);
    EXPECT_EQ(block.read(0, bytes), QVR_E_STATUS_OK);
    driver.verify();
  }
}

TEST(CounterBlocks, FailedReadConvertsOrClearsWhatTheBlockHeld) {
  enterBothLines();
  ExpectedRequests driver{Script()};
  openDevice(driver, 0);
  for (const Reader& block : readers()) {
    SCOPED_TRACE(block.name);
    driver.expect(reads(0, block.address, Bytes(block.size)).fails(EIO));
    Bytes bytes = countingWords(block.size, kFirstWord);
    EXPECT_EQ(block.read(0, bytes), QVR_E_MEMREAD_ERROR);
    for (uint32_t i = 0; i < block.size / 4; i++) {
      EXPECT_EQ(valueAt(bytes, i), block.clearedOnFailure ? 0 : kFirstWord + i) << "word " << i;
    }
    driver.verify();
  }
}

// Fills half of the buffer, then fails.
class FailsHalfway final : public Driver {
 public:
  int open(int device) override { return device; }
  int request(int /*descriptor*/, uint32_t /*code*/, gfast_iocreq& request) override {
    std::memset(request.req_u.memread.buf, 0x5A, request.req_u.memread.bufsize / 2);
    return -1;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}
};

TEST(CounterBlocks, PerformanceMonitoringBlockIsZeroAfterAPartialRead) {
  enterBothLines();
  FailsHalfway driver;
  installDriver(driver);
  G9972_PM_COUNTERS_S counters;
  EXPECT_EQ(QVR_readPerformanceMonitoringCounters(0, &counters), QVR_E_MEMREAD_ERROR);
  EXPECT_TRUE(isZero(counters));
}

TEST(CounterBlocks, FailWithoutTheDevice) {
  enterBothLines();
  ExpectedRequests driver{Script()};
  for (const Reader& block : readers()) {
    SCOPED_TRACE(block.name);
    driver.expect(opens(1).fails(ENOENT));
    Bytes bytes(block.size);
    EXPECT_EQ(block.read(1, bytes), QVR_E_DEVICE_NOT_EXISTS);
    driver.verify();
  }
}

TEST(CounterBlocks, FailWithoutARequestForALineWithoutADevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  const ExpectedRequests driver{Script()};
  for (const Reader& block : readers()) {
    SCOPED_TRACE(block.name);
    Bytes bytes = Bytes(block.size, 1);
    EXPECT_EQ(block.read(1, bytes), QVR_E_NO_DEVICE_FOR_LINE);
    EXPECT_EQ(bytes, Bytes(block.size, block.clearedOnFailure ? 0 : 1));
  }
}

TEST(CounterBlocks, AssertOnAnUnknownLine) {
  for (const Reader& block : readers()) {
    SCOPED_TRACE(block.name);
    Bytes bytes(block.size);
    EXPECT_ASSERTION(block.read(2, bytes), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  }
}

TEST(CounterFields, AreReadFromTheirWordsOfTheBlock) {
  enterBothLines();
  ExpectedRequests driver{Script()};
  openDevice(driver, 0);
  driver.expect(reads(0, 0xE2000000, countingWords(52, 0xFFFFFFF0)) +
                reads(0, 0xE2040000, countingWords(40, 0xFFFFFFF0)) +
                reads(0, 0xE2440000, countingWords(340, 0)) + reads(0, 0xE2880000, countingWords(216, 0)) +
                reads(0, 0xE5002000, countingWords(68, 0)) + reads(0, 0xF0000000, countingWords(156, 0)));
  GFAST_FDU_INIT_COUNTERS_S fduInit;
  QVR_readGfastFduInitCounters(0, &fduInit);
  EXPECT_EQ(fduInit.DacScaler, -5);
  EXPECT_EQ(fduInit.ActualAnalogGainTx, -4);
  GFAST_FDU_RAW_COUNTERS_S fduRaw;
  QVR_readGfastFduRawCounters(0, &fduRaw);
  EXPECT_EQ(fduRaw.ACTATPds, -9);
  EXPECT_EQ(fduRaw.ACTATPus, -8);
  GFAST_FRAMER_RAW_COUNTERS_S framer;
  QVR_readGfastFramerRawCounters(0, &framer);
  EXPECT_EQ(framer.numOfRetTxDTUs, 8U);
  EXPECT_EQ(framer.rtxuc, 32U);
  EXPECT_EQ(framer.attainableNdr, 49U);
  EXPECT_EQ(framer.rmcSnrMargin, 80U);
  EXPECT_EQ(framer.rpaTxLateExchanges, 84U);
  GFAST_DERIVED_COUNTERS_S derived;
  QVR_readGfastDerivedCounters(0, &derived);
  EXPECT_EQ(derived.erroredSeconds, 6U);
  EXPECT_EQ(derived.errorFreeBits, 26U);
  EXPECT_EQ(derived.continuousLossOfRMCSeconds, 53U);
  ETR_DB_S etr;
  QVR_readGfastETRdbCounters(0, &etr);
  EXPECT_EQ(etr.Rx_B_DR, 16U);
  G9972_PM_COUNTERS_S counters;
  QVR_readPerformanceMonitoringCounters(0, &counters);
  EXPECT_EQ(counters.ne.EFB, 21U);
  EXPECT_EQ(counters.fe.LOS, 22U);
  EXPECT_EQ(counters.fe.EFB, 38U);
}

}  // namespace
