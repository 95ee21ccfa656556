// Crash dumps: given this file, these blocks are read, this assertion is found.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <random>
#include <string>

#include "chip/device_information.h"
#include "qvrcli/diagnostics/crash_dump.h"
#include "std/byte_order.h"
#include "support/temporary_folder.h"
#include "unit/qvrcli/diagnostics/planted_assertion.h"

using namespace gfast;
using namespace gfast::console;

namespace {

constexpr uint32_t kNoResult = 0xEEEEEEEE;

// The lines of one block in a dump: word i is `first` plus i.
std::string block(int wordsPerLine, uint32_t first, uint32_t words = kWords) {
  std::string text;
  char piece[24];
  for (uint32_t i = 0; i < words; i += static_cast<uint32_t>(wordsPerLine)) {
    std::snprintf(piece, sizeof piece, "%08X:", QVR_K_CRASH_DUMP_ADDRESS + 4 * i);
    text += piece;
    for (int j = 0; j < wordsPerLine; j++) {
      std::snprintf(piece, sizeof piece, " %08X", first + i + static_cast<uint32_t>(j));
      text += piece;
    }
    text += "\n";
  }
  return text;
}

class CrashDumpFile : public testing::Test {
 protected:
  CrashDumpFile() {
    for (DEV_INF_S& device : devices_) {
      for (uint32_t i = 0; i < kWords; i++) {
        store_be32(device.bytes + 4 * i, kNoResult);
      }
    }
  }

  BOOL load(int addressesPerLine, const std::string& text) {
    return loadDeviceInfoFromFile(directory_.write("dump.txt", text).c_str(), devices_.data(),
                                  addressesPerLine);
  }

  uint32_t word(size_t device, uint32_t index) const {
    return load_be32(devices_[device].bytes + size_t{4} * index);
  }

  // The first words of the block are `first` plus their index; those behind them have not changed.
  void expectBlock(size_t device, uint32_t first, uint32_t words = kWords) const {
    for (uint32_t i = 0; i < kWords; i++) {
      ASSERT_EQ(word(device, i), i < words ? first + i : kNoResult) << "device " << device << " word " << i;
    }
  }

  TemporaryFolder directory_;
  Devices devices_;
};

TEST_F(CrashDumpFile, IsReadWithOneWordPerLine) {
  EXPECT_TRUE(load(1, block(1, 0x1000) + block(1, 0x2000)));
  expectBlock(0, 0x1000);
  expectBlock(1, 0x2000);
}

TEST_F(CrashDumpFile, IsReadWithFourWordsPerLineButNoSurplusWords) {
  EXPECT_TRUE(load(4, block(4, 0xFFFF0000) + block(4, 0x2000)));
  expectBlock(0, 0xFFFF0000);
  expectBlock(1, 0x2000);
}

TEST_F(CrashDumpFile, BeginsAtTheBlocksAddressOnly) {
  EXPECT_TRUE(load(1, "E30FFFFC: 00000001\nE3100004: 00000002\nE310000: 00000003\n" + block(1, 0x1000)));
  expectBlock(0, 0x1000);
  expectBlock(1, kNoResult, 0);
}

TEST_F(CrashDumpFile, GoesOnWhateverAddressesFollow) {
  std::string text = "E3100000: 00001000\n";
  for (uint32_t i = 1; i < kWords; i++) {
    char line[32];
    std::snprintf(line, sizeof line, "00000010: %08X\n", 0x1000 + i);
    text += line;
  }
  EXPECT_TRUE(load(1, text));
  expectBlock(0, 0x1000);
}

TEST_F(CrashDumpFile, SkipsLinesBetweenTheBlocks) {
  EXPECT_TRUE(load(1, block(1, 0x1000, 128) + "E3100004: 12345678\n\nread memory 1\n" + block(1, 0x2000)));
  expectBlock(0, 0x1000);
  expectBlock(1, 0x2000);
}

TEST_F(CrashDumpFile, EndsAfterTheSecondBlock) {
  std::string text;
  for (uint32_t i = 1; i <= 10; i++) {
    text += block(4, i << 16);
  }
  EXPECT_TRUE(load(4, text));
  expectBlock(0, 0x10000);
  expectBlock(1, 0x20000);
}

TEST_F(CrashDumpFile, MayEndEarly) {
  EXPECT_TRUE(load(1, block(1, 0x1000) + block(1, 0x2000, 40)));
  expectBlock(0, 0x1000);
  expectBlock(1, 0x2000, 40);
  EXPECT_TRUE(load(1, ""));
}

TEST_F(CrashDumpFile, MayLackTheLastLineEnd) {
  std::string text = block(1, 0x1000);
  text.pop_back();
  EXPECT_TRUE(load(1, text));
  expectBlock(0, 0x1000);
}

TEST_F(CrashDumpFile, MayBeASavedSession) {
  std::string text = "(gfast-cli)> read memory 0 e3100000 260\r\n";
  char line[32];
  for (uint32_t i = 0; i < kWords; i++) {
    std::snprintf(line, sizeof line, "%8x: %08x\r\n", QVR_K_CRASH_DUMP_ADDRESS + 4 * i, 0xAB00 + i);
    text += line;
    if (i == 7) {
      text += "DFE00: 10:00:00 FRM00 - assertion\r\n\r\n";
    }
  }
  EXPECT_TRUE(load(1, text + "\r\n(gfast-cli)> quit\r\n"));
  expectBlock(0, 0xAB00);
}

TEST_F(CrashDumpFile, HoldsNoBlockWithoutItsAddress) {
  EXPECT_TRUE(load(1, "E3200000: 00000001\nE3200004: 00000002\n"));
  expectBlock(0, kNoResult, 0);
}

TEST_F(CrashDumpFile, HasZeroForAWordThatIsNotHexadecimal) {
  EXPECT_TRUE(load(4,
                   "E3100000: 00000011 0000ZZ12 00000013 123456789\n"
                   "E3100010: 00000021\n"
                   "E3100020:\n"
                   "E3100030: - -1 0x7 00000044 00000045\n"));
  const std::vector<uint32_t> expected = {0x11, 0, 0x13, 0, 0x21, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x44};
  for (uint32_t i = 0; i < expected.size(); i++) {
    EXPECT_EQ(word(0, i), expected[i]) << i;
  }
  EXPECT_EQ(word(0, 16), kNoResult);
}

TEST_F(CrashDumpFile, SkipsLinesOfAnotherForm) {
  EXPECT_TRUE(load(1,
                   "E3100000: 00000001\n"
                   "\n:\n: 00000009\nE3100004 00000009\nE31000041: 00000009\nxyz: 00000009\nDFE00: "
                   "00000009\n E3100004: 00000009\nE31-0004: 00000009\n"
                   "E3100004: 00000002\n"));
  EXPECT_EQ(word(0, 0), 1U);
  EXPECT_EQ(word(0, 1), 2U);
  EXPECT_EQ(word(0, 2), kNoResult);
}

TEST_F(CrashDumpFile, HasItsLongLinesCut) {
  const std::string far(200000, ' ');
  EXPECT_TRUE(load(1, far + "E3100000: 00000009\n" + "E3100000: 00000001" + far + "\n" + "E3100004:" + far +
                          "00000009\n" + std::string(100000, 'E') + "\nE3100008: 00000003\n"));
  EXPECT_EQ(word(0, 0), 1U);
  EXPECT_EQ(word(0, 1), 0U);
  EXPECT_EQ(word(0, 2), 3U);
  EXPECT_EQ(word(0, 3), kNoResult);
}

TEST_F(CrashDumpFile, MayHaveLinesOf80Characters) {
  const std::string blanks(80 - 9 - 8, ' ');
  EXPECT_TRUE(load(1, "E3100000:" + blanks + "00000001\r\nE3100004: " + blanks + "00000002\n"));
  EXPECT_EQ(word(0, 0), 1U);
  EXPECT_EQ(word(0, 1), 0U);  // seven of its digits are left, which are another word
}

TEST_F(CrashDumpFile, MayHoldAnyBytes) {
  std::string bytes;
  for (int i = 0; i < 100000; i++) {
    bytes += static_cast<char>(i * 7919 >> 3);
  }
  EXPECT_TRUE(load(4, bytes));
  using namespace std::string_literals;
  EXPECT_TRUE(load(1, "E3100000: 0000\0001\nE3100000\0: 00000002\n"s));
  EXPECT_EQ(word(0, 0), 0U);
}

TEST_F(CrashDumpFile, MayBeDamagedInAnyWay) {
  std::mt19937 random(2026);
  const std::string whole = block(1, 0x1000) + block(4, 0x2000) + block(1, 0x3000);
  for (int round = 0; round < 500; round++) {
    std::string text = whole;
    for (auto damages = random() % 50; damages > 0; damages--) {
      const size_t at = random() % text.size();
      switch (random() % 4) {
        case 0:
          text[at] = static_cast<char>(random());
          break;
        case 1:
          text.erase(at, random() % 100);
          break;
        case 2:
          text.insert(at, whole.substr(random() % whole.size(), random() % 200));
          break;
        default:
          text.insert(at, random() % 200, text[at]);
      }
    }
    EXPECT_TRUE(load(round % 2 == 0 ? 1 : 4, text));
    CLI_leadingAssert_t lead;
    findLeadingAssert(devices_.data(), &lead);
    EXPECT_LE(lead.count, 6U);
  }
}

TEST_F(CrashDumpFile, FailsForAnyOtherNumberOfWordsPerLine) {
  for (const int number : {-1, 0, 2, 3, 5}) {
    EXPECT_FALSE(load(number, block(1, 0x1000))) << number;
    EXPECT_FALSE(load(number, "")) << number;
  }
  expectBlock(0, kNoResult, 0);
}

TEST_F(CrashDumpFile, FailsWhenItCannotBeRead) {
  const std::string pipe = directory_.path() + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path :
       {std::string(), directory_.path() + "/missing", directory_.path(), pipe, std::string("/dev/zero")}) {
    EXPECT_FALSE(loadDeviceInfoFromFile(path.c_str(), devices_.data(), 1)) << path;
  }
}

// ---- Leading assertion ----

class LeadingAssert : public testing::Test {
 protected:
  void plantAt(size_t device, CLI_CPU_TYPE_E cpu, uint32_t id, uint32_t symbolCounter) {
    plant(devices_[device], cpu, id, symbolCounter);
  }

  CLI_leadingAssert_t found() {
    CLI_leadingAssert_t assertion;
    findLeadingAssert(devices_.data(), &assertion);
    return assertion;
  }

  void expectLead(const CLI_leadingAssert_t& lead, uint32_t id, uint32_t symbolCounter, int device, int line,
                  CLI_CPU_TYPE_E cpu, uint32_t count) {
    EXPECT_EQ(lead.assertId, id);
    EXPECT_EQ(lead.symbolCounter, symbolCounter);
    EXPECT_EQ(lead.tbmSymbol, id + 1);
    EXPECT_EQ(lead.tbmPhase, id + 2);
    EXPECT_EQ(lead.tbmSample, id + 3);
    EXPECT_EQ(lead.deviceId, device);
    EXPECT_EQ(lead.lineId, line);
    EXPECT_EQ(lead.cpuType, cpu);
    EXPECT_EQ(lead.count, count);
  }

  Devices devices_{};
};

TEST_F(LeadingAssert, IsFoundAtEveryProcessor) {
  for (size_t device = 0; device < 2; device++) {
    for (const CLI_CPU_TYPE_E cpu : {CPU_FRAMER, CPU_FDU, CPU_CP}) {
      devices_ = {};
      plantAt(device, cpu, 0x1234, 77);
      expectLead(found(), 0x1234, 77, static_cast<int>(device), cpu == CPU_CP ? 1 : 0, cpu, 1);
    }
  }
}

TEST_F(LeadingAssert, IsTheSmallestSymbolCounter) {
  plantAt(0, CPU_FRAMER, 100, 50);
  plantAt(0, CPU_CP, 200, 40);
  plantAt(1, CPU_FRAMER, 300, 0x80000000);
  plantAt(1, CPU_FDU, 400, 39);
  expectLead(found(), 400, 39, 1, 0, CPU_FDU, 1);
}

TEST_F(LeadingAssert, IsTheFirstOfEqualOnesAndAllAreCounted) {
  plantAt(0, CPU_FDU, 100, 50);
  plantAt(0, CPU_CP, 200, 40);
  plantAt(1, CPU_FRAMER, 300, 40);
  plantAt(1, CPU_CP, 400, 40);
  expectLead(found(), 200, 40, 0, 1, CPU_CP, 3);
}

TEST_F(LeadingAssert, CountsOnlyThoseOfItsOwnSymbol) {
  plantAt(0, CPU_FRAMER, 100, 50);
  plantAt(0, CPU_FDU, 200, 50);
  plantAt(1, CPU_CP, 300, 49);
  expectLead(found(), 300, 49, 1, 1, CPU_CP, 1);
}

TEST_F(LeadingAssert, IsNoneOfSymbolZero) {
  plantAt(0, CPU_FRAMER, 100, 0);
  plantAt(1, CPU_CP, 200, 0);
  const CLI_leadingAssert_t none = found();
  EXPECT_EQ(none.assertId, 0U);
  EXPECT_EQ(none.symbolCounter, 0U);
  EXPECT_EQ(none.count, 0U);
  EXPECT_EQ(none.cpuType, CPU_FRAMER);
}

// The search starts with the greatest value of the counter. Such an assertion is counted, but not found.
TEST_F(LeadingAssert, IsCountedButNotFoundAtTheLastSymbol) {
  plantAt(1, CPU_FDU, 100, 0xFFFFFFFF);
  EXPECT_EQ(found().assertId, 0U);
  EXPECT_EQ(found().count, 1U);
}

}  // namespace
