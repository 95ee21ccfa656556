// Bit loading of data and RMC symbols: which table of the chip is read, what its entries mean, and what
// happens when a table cannot be read or changes meanwhile.
#include "qvrline/bit_loading.h"

#include <gfast_api.h>

#include "chip/tones.h"
#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

constexpr uint32_t kSentBits = 0xE5000000;
constexpr uint32_t kReceivedBits = 0xE5001000;

struct RmcMemory {
  uint32_t index;
  uint32_t areas[2];
};
constexpr RmcMemory kSentRmc{0xE500B000, {0xE5003000, 0xE5007000}};
constexpr RmcMemory kReceivedRmc{0xE500C000, {0xE5004000, 0xE5008000}};

constexpr int entry(int tone, int bits) {
  return tone << 4 | bits;
}

// The tables, and the operations that read them.
struct Table {
  const char* name;
  QVR_retval_t (*read)(QVR_lineId_t line, QVR_BLT_t bits);
  bool isTx;
};
constexpr Table kDataTables[] = {
    {"TX", QVR_readTxBitLoadingTable, true},
    {"RX", QVR_readRxBitLoadingTable, false},
};
constexpr Table kRmcTables[] = {
    {"TX RMC", QVR_readTxRMCBitLoadingTable, true},
    {"RX RMC", QVR_readRxRMCBitLoadingTable, false},
};

class BitLoading : public ToneTest {
 protected:
  void SetUp() override {
    ToneTest::SetUp();
    clear();
  }

  void clear() { std::fill_n(bits_, QVR_MAX_NUMBER_OF_TONES, -7); }
  bool untouched() const {
    return std::all_of(bits_, bits_ + QVR_MAX_NUMBER_OF_TONES, [](int32_t bits) { return bits == -7; });
  }

  static Script findsSet(int device, bool isTx, const Bytes& set) {
    return findsTones(device, 43, 1929) + reads(device, isTx ? kSentSet : kReceivedSet, set);
  }

  // The data table in its requests.
  static Script readsData(int device, bool isTx, const Bytes& set, const Bytes& entries) {
    return findsSet(device, isTx, set) + readsInPieces(device, isTx ? kSentBits : kReceivedBits, entries);
  }

  static Bytes rmcArea(const std::vector<int>& entries, uint8_t filler = 0xFF) {
    Bytes bytes = littleEndian16(entries);
    bytes.resize(4096, filler);
    return bytes;
  }

  static Script readsArea(int device, const RmcMemory& memory, uint32_t index, const Bytes& area) {
    return readsInPieces(device, memory.areas[index % 2], area);
  }

  // The subcarriers that carry bits.
  std::vector<std::pair<uint32_t, int32_t>> loaded() const {
    std::vector<std::pair<uint32_t, int32_t>> tones;
    for (uint32_t tone = 0; tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
      if (bits_[tone] != 0) {
        tones.emplace_back(tone, bits_[tone]);
      }
    }
    return tones;
  }

  QVR_BLT_t bits_;
};

using Loaded = std::vector<std::pair<uint32_t, int32_t>>;

TEST_F(BitLoading, IsReadFromItsTableForItsMedleySetOnBothSides) {
  for (const Table& table : kDataTables) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      SCOPED_TRACE(table.name);
      driver_.expect(readsData(line, table.isTx, medleySet({{7, 9}}),
                               littleEndian16({entry(7, 1), entry(8, 2), entry(9, 14)})));
      EXPECT_EQ(table.read(line, bits_), QVR_E_STATUS_OK);
      EXPECT_EQ(loaded(), (Loaded{{7, 1}, {8, 2}, {9, 14}}));
      driver_.verify();
    }
  }
}

TEST(BitLoadingAddresses, DependOnTheLineIndex) {
  EXPECT_EQ(VIRT_ADDR_TX_BLT(3), 0xE5300000U);
  EXPECT_EQ(VIRT_ADDR_RX_BLT(3), 0xE5301000U);
  EXPECT_EQ(VIRT_ADDR_TX_RMC_BLT_INDEX(3), 0xE530B000U);
  EXPECT_EQ(VIRT_ADDR_RX_RMC_BLT_INDEX(3), 0xE530C000U);
  EXPECT_EQ(VIRT_ADDR_TX_RMC_BLT(3, 0), 0xE5303000U);
  EXPECT_EQ(VIRT_ADDR_TX_RMC_BLT(3, 1), 0xE5307000U);
  EXPECT_EQ(VIRT_ADDR_RX_RMC_BLT(3, 0), 0xE5304000U);
  EXPECT_EQ(VIRT_ADDR_RX_RMC_BLT(3, 1), 0xE5308000U);
}

TEST_F(BitLoading, IsZeroOutsideTheBandsOfTheSet) {
  std::vector<int> entries;
  for (int tone = 100; tone <= 200; tone++) {
    entries.push_back(entry(tone, 1 + tone % 14));
  }
  driver_.expect(readsData(0, true, medleySet({{100, 200}}), littleEndian16(entries)));
  EXPECT_EQ(QVR_readTxBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  for (int tone = 0; tone < 2048; tone++) {
    EXPECT_EQ(bits_[tone], tone >= 100 && tone <= 200 ? 1 + tone % 14 : 0) << tone;
  }
}

TEST_F(BitLoading, IsZeroForAPilot) {
  driver_.expect(readsData(0, true, medleySet({{100, 102}}),
                           littleEndian16({entry(100, 15), entry(101, 14), entry(102, 15)})));
  EXPECT_EQ(QVR_readTxBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_EQ(loaded(), (Loaded{{101, 14}}));
}

TEST_F(BitLoading, WholeGridTakesFiveRequests) {
  std::vector<int> entries;
  for (int tone = 0; tone < 2048; tone++) {
    entries.push_back(entry(tone, 3));
  }
  const Script script = readsData(0, false, medleySet({{0, 2047}}), littleEndian16(entries));
  EXPECT_EQ(script.size(), 3U + 1 + 1 + 5);
  driver_.expect(script);
  EXPECT_EQ(QVR_readRxBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_EQ(loaded().size(), 2048U);
}

TEST_F(BitLoading, EntriesNameTheirSubcarrierAndCountOnlyInsideTheSet) {
  driver_.expect(readsData(0, true, medleySet({{10, 11}, {14, 15}}),
                           littleEndian16({entry(15, 5), entry(12, 6), entry(2048, 7), entry(4095, 8),
                                           entry(10, 9), entry(10, 4)})));
  EXPECT_EQ(QVR_readTxBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_EQ(loaded(), (Loaded{{10, 4}, {15, 5}}));
}

// An entry has twelve bits for its subcarrier, one more than there are subcarriers.
TEST_F(BitLoading, EntriesPastTheLastSubcarrierChangeNothing) {
  for (const Table& table : kDataTables) {
    struct {
      QVR_BLT_t bits;
      int32_t behind[2048];
    } memory{};
    driver_.expect(readsData(0, table.isTx, medleySet({{1, 3}}),
                             littleEndian16({entry(2048, 5), entry(2049, 6), entry(2050, 7)})));
    EXPECT_EQ(table.read(0, memory.bits), QVR_E_STATUS_OK);
    for (size_t i = 0; i < std::size(memory.bits); i++) {
      EXPECT_EQ(memory.bits[i], 0) << i;
      EXPECT_EQ(memory.behind[i], 0) << i;
    }
  }
}

TEST_F(BitLoading, IsZeroWithoutARequestForAnEmptySet) {
  driver_.expect(findsSet(0, true, medleySet({})) + findsSet(0, false, medleySet({{9, 3}})));
  EXPECT_EQ(QVR_readTxBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_TRUE(loaded().empty());
  EXPECT_EQ(QVR_readRxBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_TRUE(loaded().empty());
}

TEST_F(BitLoading, SucceedsAndKeepsTheTableWhenTheLoadingCannotBeRead) {
  for (const Table& table : kDataTables) {
    SCOPED_TRACE(table.name);
    const Script script = readsData(0, table.isTx, medleySet({{0, 2047}}), Bytes(4096));
    for (size_t position = script.size() - 5; position < script.size(); position++) {
      driver_.expect(script.failingAt(position, EIO));
      EXPECT_EQ(table.read(0, bits_), QVR_E_STATUS_OK);
      EXPECT_TRUE(untouched());
      driver_.verify();
    }
  }
}

TEST_F(BitLoading, FailsAndKeepsTheTableWhenAnotherRequestFails) {
  for (const Table& table : kDataTables) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      SCOPED_TRACE(table.name);
      expectEachFailureAnswered(
          [&] {
            return readsData(line, table.isTx, medleySet({{0, 2047}}), Bytes(4096));
          },
          [&](bool& left) {
            const QVR_retval_t status = table.read(line, bits_);
            left = untouched();
            return status;
          });
    }
  }
}

TEST_F(BitLoading, FailsForAnImpossibleSet) {
  for (const Bytes& set : {medleySet({}, 32), medleySet({{2000, 2048}})}) {
    for (const Table& table : {kDataTables[0], kDataTables[1], kRmcTables[0], kRmcTables[1]}) {
      driver_.expect(findsSet(0, table.isTx, set));
      EXPECT_EQ(table.read(0, bits_), QVR_E_ERROR);
      EXPECT_TRUE(untouched());
    }
  }
}

TEST_F(BitLoading, FailsForALineThatIsDownOrHasNoDevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  for (const Table& table : {kDataTables[0], kDataTables[1], kRmcTables[0], kRmcTables[1]}) {
    SCOPED_TRACE(table.name);
    driver_.expect(readsIdentity(0, chipWithLine(LS_INIT_TRAIN)));
    EXPECT_EQ(table.read(0, bits_), QVR_E_ERROR);
    EXPECT_EQ(table.read(1, bits_), QVR_E_NO_DEVICE_FOR_LINE);
    EXPECT_TRUE(untouched());
    EXPECT_ASSERTION(table.read(2, bits_), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  }
}

using RmcBitLoading = BitLoading;

TEST_F(RmcBitLoading, IsReadFromTheAreaOfTheIndex) {
  for (const Table& table : kRmcTables) {
    const RmcMemory& memory = table.isTx ? kSentRmc : kReceivedRmc;
    for (const uint32_t index : {0U, 1U, 2U, 0xFFFFFFFFU}) {
      for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
        SCOPED_TRACE(table.name);
        driver_.expect(findsSet(line, table.isTx, medleySet({{43, 1971}})) +
                       readsWord(line, memory.index, index) +
                       readsArea(line, memory, index, rmcArea({entry(50, 6), entry(1900, 2)})) +
                       readsWord(line, memory.index, index));
        EXPECT_EQ(table.read(line, bits_), QVR_E_STATUS_OK);
        EXPECT_EQ(loaded(), (Loaded{{50, 6}, {1900, 2}}));
        driver_.verify();
      }
    }
  }
}

TEST_F(RmcBitLoading, IsReadAgainWhenTheIndexChanged) {
  driver_.expect(findsSet(0, true, medleySet({{43, 1971}})) + readsWord(0, kSentRmc.index, 4) +
                 readsArea(0, kSentRmc, 4, rmcArea({entry(50, 6)})) + readsWord(0, kSentRmc.index, 5) +
                 readsArea(0, kSentRmc, 5, rmcArea({entry(51, 7)})) + readsWord(0, kSentRmc.index, 7) +
                 readsArea(0, kSentRmc, 7, rmcArea({entry(52, 8)})) + readsWord(0, kSentRmc.index, 7));
  EXPECT_EQ(QVR_readTxRMCBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_EQ(loaded(), (Loaded{{52, 8}}));
}

TEST_F(RmcBitLoading, FailsAfter50ReadsWhenTheIndexKeepsChanging) {
  Script script = findsSet(0, false, medleySet({{43, 1971}})) + readsWord(0, kReceivedRmc.index, 0);
  for (uint32_t reading = 0; reading < 50; reading++) {
    script = script + readsArea(0, kReceivedRmc, reading, rmcArea({})) +
             readsWord(0, kReceivedRmc.index, reading + 1);
  }
  driver_.expect(script);
  EXPECT_EQ(QVR_readRxRMCBitLoadingTable(0, bits_), QVR_E_ERROR);
  EXPECT_TRUE(untouched());
}

TEST_F(RmcBitLoading, EndsAtAnEntryOf0xFFFF) {
  std::vector<int> entries{entry(50, 6), 0xFFFF, entry(51, 6)};
  driver_.expect(findsSet(0, true, medleySet({{43, 1971}})) + readsWord(0, kSentRmc.index, 0) +
                 readsArea(0, kSentRmc, 0, rmcArea(entries, 0)) + readsWord(0, kSentRmc.index, 0));
  EXPECT_EQ(QVR_readTxRMCBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_EQ(loaded(), (Loaded{{50, 6}}));
}

TEST_F(RmcBitLoading, IsZeroForAnEmptyList) {
  driver_.expect(findsSet(0, true, medleySet({{43, 1971}})) + readsWord(0, kSentRmc.index, 0) +
                 readsArea(0, kSentRmc, 0, rmcArea({})) + readsWord(0, kSentRmc.index, 0));
  EXPECT_EQ(QVR_readTxRMCBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_TRUE(loaded().empty());
}

TEST_F(RmcBitLoading, EndsAfter512EntriesWithoutOneOf0xFFFF) {
  std::vector<int> entries;
  for (int tone = 0; tone < 2048; tone++) {
    entries.push_back(entry(tone, 4));
  }
  driver_.expect(findsSet(0, true, medleySet({{0, 2047}})) + readsWord(0, kSentRmc.index, 1) +
                 readsArea(0, kSentRmc, 1, rmcArea(entries)) + readsWord(0, kSentRmc.index, 1));
  EXPECT_EQ(QVR_readTxRMCBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_EQ(loaded().size(), 512U);
  EXPECT_EQ(loaded().back().first, 511U);
}

TEST_F(RmcBitLoading, IgnoresPilotsAndEntriesOutsideTheSet) {
  const std::vector<int> entries{entry(100, 15), entry(101, 3), entry(99, 4), entry(3000, 5)};
  driver_.expect(findsSet(0, true, medleySet({{100, 101}})) + readsWord(0, kSentRmc.index, 0) +
                 readsArea(0, kSentRmc, 0, rmcArea(entries)) + readsWord(0, kSentRmc.index, 0));
  EXPECT_EQ(QVR_readTxRMCBitLoadingTable(0, bits_), QVR_E_STATUS_OK);
  EXPECT_EQ(loaded(), (Loaded{{101, 3}}));
}

TEST_F(RmcBitLoading, FailsAndKeepsTheTableWhenAnyRequestFails) {
  for (const Table& table : kRmcTables) {
    const RmcMemory& memory = table.isTx ? kSentRmc : kReceivedRmc;
    const Script script = findsSet(0, table.isTx, medleySet({{43, 1971}})) + readsWord(0, memory.index, 0) +
                          readsArea(0, memory, 0, rmcArea({entry(50, 6)})) + readsWord(0, memory.index, 1) +
                          readsArea(0, memory, 1, rmcArea({entry(50, 6)})) + readsWord(0, memory.index, 1);
    for (size_t position = 0; position < script.size(); position++) {
      SCOPED_TRACE(position);
      driver_.expect(script.failingAt(position, EIO));
      EXPECT_EQ(table.read(0, bits_), position < 3 ? QVR_E_ERROR : QVR_E_MEMREAD_ERROR);
      EXPECT_TRUE(untouched());
      driver_.verify();
    }
  }
}

}  // namespace
