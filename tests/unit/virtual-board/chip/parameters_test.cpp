#include "virtual-board/chip/parameters.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kDictionary = 0xEA000000;
constexpr uint32_t kEntries = 0xEA00000C;
constexpr uint32_t kLineArea = 0xEC000000;
constexpr uint32_t kRestartNeeded = 0x10000;
constexpr double kBoot_s = 1.3;

struct Entry {
  uint32_t id, length, offset, state, type;
};

// The dictionary by id, as a host reads it.
std::map<uint32_t, Entry> entries(Bench& bench, int device) {
  std::map<uint32_t, Entry> found;
  const uint32_t size = bench.word(device, kDictionary + 8);
  const auto bytes = fromHex(bench.read(device, kEntries, static_cast<uint16_t>(size)));
  for (size_t at = 0; at + 4 <= bytes.size(); at += 4) {
    const uint32_t word = load_le32(&bytes[at]);
    found[word & 0x3FFU] = {word & 0x3FFU, word >> 10 & 0x1FFU, word >> 19 & 0x7FFU, word >> 30 & 1U,
                            word >> 31};
  }
  return found;
}

uint32_t startupAddress(Bench& bench, uint32_t id) {
  return bench.word(0, kDictionary) + entries(bench, 0).at(id).offset;
}
uint32_t lineAddress(Bench& bench, uint32_t id) {
  return kLineArea + entries(bench, 0).at(id).offset;
}

std::string startup(Bench& bench, int device, uint32_t id) {
  const Entry entry = entries(bench, 0).at(id);
  return bench.read(device, startupAddress(bench, id), static_cast<uint16_t>(entry.length));
}
std::string line(Bench& bench, int device, uint32_t id) {
  const Entry entry = entries(bench, 0).at(id);
  return bench.read(device, lineAddress(bench, id), static_cast<uint16_t>(entry.length));
}

bool restartNeeded(Bench& bench, int device) {
  return (bench.sbr(device) & kRestartNeeded) != 0;
}

void restart(Bench& bench, int device) {
  bench.rebootToApp(device);
  bench.wait(kBoot_s);
}

}  // namespace

TEST(ParameterDictionary, TheHeaderGivesAddressAndSizes) {
  Bench bench;
  for (const int device : {0, 1}) {
    // The area at 0xE9000000, 130 entries of four bytes behind the header.
    EXPECT_EQ(bench.word(device, kDictionary), 0xE9000000U);
    EXPECT_EQ(bench.word(device, kDictionary + 4), parameterAreaSize());
    EXPECT_EQ(bench.read(device, kDictionary + 8, 4), "08 02 00 00");
  }
  EXPECT_LT(parameterAreaSize(), 2048U);
  EXPECT_EQ(parameterAreaSize() % 4, 0U);
}

TEST(ParameterDictionary, AnEntryIsIdLengthOffsetStateAndType) {
  Bench bench;
  // 4 bytes at offset 0, then 6 bytes at offset 4, both of the system.
  EXPECT_EQ(bench.read(0, kEntries, 8), "00 10 00 00 01 18 20 00");
  // A parameter of the line that can be written while the chip runs: state and type are 1.
  EXPECT_EQ(bench.word(0, kEntries + 83 * 4) >> 30, 3U);
  // A parameter of the line that needs a restart: only the type is 1.
  EXPECT_EQ(bench.word(0, kEntries + 103 * 4) >> 30, 2U);
}

TEST(ParameterDictionary, EveryParameterHasItsEntryInTheArea) {
  Bench bench;
  const auto found = entries(bench, 0);
  ASSERT_EQ(found.size(), 130U);
  EXPECT_EQ(found.rbegin()->first, 129U);
  const uint32_t size = bench.word(0, kDictionary + 4);
  std::set<uint32_t> taken;
  for (const auto& [id, entry] : found) {
    EXPECT_GT(entry.length, 0U) << id;
    EXPECT_LE(entry.offset + entry.length, size) << id;
    EXPECT_EQ(entry.offset % (entry.length == 4 ? 4 : 2), 0U) << id;
    for (uint32_t byte = entry.offset; byte < entry.offset + entry.length; byte++) {
      EXPECT_TRUE(taken.insert(byte).second) << id << " shares byte " << byte;
    }
    // A parameter of the device always needs a restart.
    EXPECT_FALSE(entry.state == 1 && entry.type == 0) << id;
  }
}

TEST(ParameterDictionary, ThereAreNumbersOfTwoAndFourBytesAndStringsOfEvenAndOddLength) {
  Bench bench;
  std::map<uint32_t, std::set<uint32_t>> byLength;
  for (const auto& [id, entry] : entries(bench, 0)) {
    byLength[entry.length].insert(id);
  }
  EXPECT_EQ(byLength[3], std::set<uint32_t>{PARAMS_pad_1});
  EXPECT_EQ(byLength[6], (std::set<uint32_t>{PARAMS_ClassifierUnicastMask, PARAMS_ClassifierMulticastMask}));
  EXPECT_EQ(byLength[8], std::set<uint32_t>{PARAMS_GHSToneAmplitudeConfig});
  EXPECT_EQ(byLength[12], std::set<uint32_t>{PARAMS_reserved_1});
  EXPECT_TRUE(byLength[2].contains(PARAMS_usMargin));
  EXPECT_TRUE(byLength[4].contains(PARAMS_cyclicPrefixSize));
  EXPECT_EQ(byLength.size(), 6U);
}

TEST(ParameterDictionary, IsTheSameOnBothChips) {
  Bench bench;
  const auto length = static_cast<uint16_t>(12 + bench.word(0, kDictionary + 8));
  EXPECT_EQ(bench.read(0, kDictionary, length), bench.read(1, kDictionary, length));
}

TEST(ParameterDictionary, CannotBeWritten) {
  Bench bench;
  const std::string before = bench.read(0, kDictionary, 16);
  EXPECT_EQ(bench.write(0, kDictionary, "ff ff ff ff"), "ok");
  EXPECT_EQ(bench.read(0, kDictionary, 16), before);
}

TEST(ParameterDictionary, CanBeReplacedByABoardFile) {
  Bench bench("[[memory]]\ndevice = 0\naddress = 0xEA000008\nbytes = \"ff ff ff 7f\"");
  EXPECT_EQ(bench.read(0, kDictionary + 8, 4), "ff ff ff 7f");
  EXPECT_EQ(bench.read(1, kDictionary + 8, 4), "08 02 00 00");
}

TEST(ParameterDictionary, OnlyTheApplicationHasIt) {
  for (const char* boot : {"b0", "b1"}) {
    Bench bench(("[[device]]\nboot = \"" + std::string(boot) + '"'));
    EXPECT_EQ(bench.read(0, kDictionary, 16), zeros(16)) << boot;
    EXPECT_EQ(bench.read(0, 0xE9000000, 64), zeros(64)) << boot;
    EXPECT_EQ(bench.read(0, kLineArea, 64), zeros(64)) << boot;
    EXPECT_EQ(bench.word(1, kDictionary), 0xE9000000U) << boot;
  }
}

TEST(Parameters, InitialValues) {
  const struct {
    uint32_t id;
    const char* bytes;
  } values[] = {
      {PARAMS_ClassifierUnicastMask, "ff ff ff ff ff ff"},
      {PARAMS_ClassifierMulticastMask, "01 00 00 00 00 00"},
      {PARAMS_reserved_1, "00 00 00 00 00 00 00 00 00 00 00 00"},
      {PARAMS_numTduSymbolSamples, "a0 08 00 00"},
      {PARAMS_numTxSymbolsInFrame, "24 00 00 00"},
      {PARAMS_numDownstreamSymbols, "1c 00 00 00"},
      {PARAMS_profileNumber, "6a 00 00 00"},
      {PARAMS_bandStart_0, "2b 00 00 00"},
      {PARAMS_bandStart_2, "b3 07 00 00"},
      {PARAMS_numTones, "00 08 00 00"},
      {PARAMS_codeWordSize, "f0 00 00 00"},
      {PARAMS_rsRedundancy, "10 00 00 00"},
      {PARAMS_disableUsSra, "00 00 00 00"},
      {PARAMS_vectoringEnabled, "01 00 00 00"},
      {PARAMS_usMargin, "3c 00"},
      {PARAMS_dsMargin, "3c 00"},
      {PARAMS_cyclicPrefixSize, "a0 00 00 00"},
      {PARAMS_blUpperLimit, "0c 00"},
      {PARAMS_us_fREIN, "64 00 00 00"},
      {PARAMS_IARBands, "00 00 00 00"},
      {PARAMS_RFIBand_15, "00 00 00 00"},
      {PARAMS_dsRsRedundancy, "10 00 00 00"},
      {PARAMS_usRsRedundancy, "0c 00 00 00"},
  };
  Bench bench;
  for (const auto& value : values) {
    for (const int device : {0, 1}) {
      EXPECT_EQ(startup(bench, device, value.id), value.bytes) << value.id;
      EXPECT_EQ(line(bench, device, value.id), value.bytes) << value.id;
    }
  }
  EXPECT_FALSE(restartNeeded(bench, 0));
  EXPECT_FALSE(restartNeeded(bench, 1));
}

TEST(Parameters, AChangedSystemParameterNeedsARestartThatAppliesIt) {
  Bench bench;
  const uint32_t address = startupAddress(bench, PARAMS_numDownstreamSymbols);
  EXPECT_EQ(bench.write(0, address, "14 00 00 00"), "ok");
  EXPECT_EQ(startup(bench, 0, PARAMS_numDownstreamSymbols), "14 00 00 00");
  EXPECT_EQ(line(bench, 0, PARAMS_numDownstreamSymbols), "1c 00 00 00");
  EXPECT_TRUE(restartNeeded(bench, 0));
  EXPECT_FALSE(restartNeeded(bench, 1));
  restart(bench, 0);
  EXPECT_FALSE(restartNeeded(bench, 0));
  EXPECT_EQ(startup(bench, 0, PARAMS_numDownstreamSymbols), "14 00 00 00");
  EXPECT_EQ(line(bench, 0, PARAMS_numDownstreamSymbols), "14 00 00 00");
  EXPECT_EQ(startup(bench, 1, PARAMS_numDownstreamSymbols), "1c 00 00 00");
}

TEST(Parameters, WritingTheSameValueNeedsNoRestart) {
  Bench bench;
  bench.write(0, startupAddress(bench, PARAMS_numDownstreamSymbols), "1c 00 00 00");
  EXPECT_FALSE(restartNeeded(bench, 0));
}

TEST(Parameters, OneByteOfAValueCanBeWritten) {
  Bench bench;
  bench.write(1, startupAddress(bench, PARAMS_RFIBand_3) + 2, "c8");
  EXPECT_EQ(startup(bench, 1, PARAMS_RFIBand_3), "00 00 c8 00");
  EXPECT_TRUE(restartNeeded(bench, 1));
}

TEST(Parameters, AStringOfOddLengthDoesNotChangeItsNeighbour) {
  Bench bench;
  bench.write(0, startupAddress(bench, PARAMS_pad_1), "01 02 03");
  EXPECT_EQ(bench.read(0, startupAddress(bench, PARAMS_pad_1), 4), "01 02 03 00");
  EXPECT_EQ(startup(bench, 0, PARAMS_outerVlanID), "00 00");
  EXPECT_TRUE(restartNeeded(bench, 0));
}

TEST(Parameters, AChangeSurvivesARunOfTheBootLoader) {
  Bench bench;
  const uint32_t address = startupAddress(bench, PARAMS_vectoringEnabled);
  bench.write(0, address, "00 00 00 00");
  bench.rebootToB1(0);
  bench.wait(kBoot_s);
  EXPECT_EQ(bench.write(0, address, "07 00 00 00"), "ok");
  EXPECT_EQ(bench.write(0, kLineArea, "07 00 00 00"), "ok");
  EXPECT_EQ(bench.read(0, address, 4), "00 00 00 00");
  EXPECT_EQ(bench.sbr(0) & kRestartNeeded, 0U);
  restart(bench, 0);
  EXPECT_EQ(startup(bench, 0, PARAMS_vectoringEnabled), "00 00 00 00");
  EXPECT_EQ(line(bench, 0, PARAMS_vectoringEnabled), "00 00 00 00");
  EXPECT_EQ(line(bench, 0, PARAMS_ParamsRevision), "01 00 00 00");
}

TEST(LineParameters, AWriteToTheLineChangesTheRunningCopyUntilTheRestart) {
  Bench bench;
  EXPECT_EQ(bench.write(1, lineAddress(bench, PARAMS_usMargin), "50 00"), "ok");
  EXPECT_EQ(line(bench, 1, PARAMS_usMargin), "50 00");
  EXPECT_EQ(line(bench, 0, PARAMS_usMargin), "3c 00");
  EXPECT_EQ(startup(bench, 1, PARAMS_usMargin), "3c 00");
  EXPECT_FALSE(restartNeeded(bench, 1));
  restart(bench, 1);
  EXPECT_EQ(line(bench, 1, PARAMS_usMargin), "3c 00");
}

TEST(LineParameters, AParameterThatNeedsARestartCannotBeWrittenToTheLine) {
  Bench bench;
  for (const uint32_t id : {PARAMS_RFIBand_0, PARAMS_cyclicPrefixSize}) {
    const std::string before = line(bench, 0, id);
    EXPECT_EQ(bench.write(0, lineAddress(bench, id), "07 00 00 00"), "ok");
    EXPECT_EQ(line(bench, 0, id), before) << id;
    EXPECT_EQ(startup(bench, 0, id), before) << id;
  }
  EXPECT_FALSE(restartNeeded(bench, 0));
}

TEST(LineParameters, AStartUpValueAppliesAfterTheNextRestartAndNeedsNone) {
  Bench bench;
  bench.write(0, startupAddress(bench, PARAMS_dsMargin), "5a 00");
  EXPECT_FALSE(restartNeeded(bench, 0));
  EXPECT_EQ(line(bench, 0, PARAMS_dsMargin), "3c 00");
  restart(bench, 0);
  EXPECT_EQ(line(bench, 0, PARAMS_dsMargin), "5a 00");
}

TEST(LineParameters, AWriteOfTheWholeAreaChangesOnlyTheLinesParameters) {
  Bench bench;
  for (uint32_t at = 0; at < parameterAreaSize(); at += 4) {
    bench.write(0, kLineArea + at, "ff ff ff ff");
  }
  for (const auto& [id, entry] : entries(bench, 0)) {
    if (entry.state == 1 && entry.type == 1) {
      EXPECT_EQ(line(bench, 0, id), hex("\xff\xff\xff\xff", entry.length)) << id;
    } else {
      EXPECT_EQ(line(bench, 0, id), startup(bench, 0, id)) << id;
    }
  }
}

// The values that the board's line uses.
TEST(RunningParameters, AreThoseOfTheLastRestartAndTheLinesOwn) {
  ParameterSettings settings;
  settings[PARAMS_dsMargin] = fromHex("5a 00");
  AddressSpace memory;
  Parameters parameters(settings);
  int restartsNeeded = 0;
  parameters.map(memory, {[] { return true; }, [&] { restartsNeeded++; }});
  const auto offset = [](eConstParams id) { return parameterTable()[id].offset; };
  memory.write(0xE9000000 + offset(PARAMS_cyclicPrefixSize), fromHex("40 01 00 00"));
  memory.write(kLineArea + offset(PARAMS_usMargin), fromHex("c4 ff"));
  EXPECT_EQ(restartsNeeded, 1);
  EXPECT_EQ(parameters.running(PARAMS_dsMargin), 90U);
  EXPECT_EQ(parameters.running(PARAMS_usMargin), 0xFFC4U);
  EXPECT_EQ(parameters.running(PARAMS_cyclicPrefixSize), 160U);
  parameters.apply();
  EXPECT_EQ(parameters.running(PARAMS_usMargin), 60U);
  EXPECT_EQ(parameters.running(PARAMS_cyclicPrefixSize), 320U);
  EXPECT_EQ(parameters.running(PARAMS_ClassifierUnicastMask), 0xFFFFFFFFU);
  parameters.powerUp();
  EXPECT_EQ(parameters.running(PARAMS_dsMargin), 90U);
  EXPECT_EQ(parameters.running(PARAMS_cyclicPrefixSize), 160U);
}

TEST(BoardFileParameters, AreInTheStartUpAreaAndInTheLinesCopy) {
  Bench bench(R"(
    [[device]]
    params = { usMargin = 80, dsMargin = -5, cyclicPrefixSize = 0x140, pad_1 = "0a 0b 0c" }
    [[device]]
    params = { ClassifierUnicastMask = "ff:ff:ff:00:00:00", usRsRedundancy = 4294967295 }
  )");
  EXPECT_EQ(startup(bench, 0, PARAMS_usMargin), "50 00");
  EXPECT_EQ(line(bench, 0, PARAMS_usMargin), "50 00");
  EXPECT_EQ(startup(bench, 0, PARAMS_dsMargin), "fb ff");
  EXPECT_EQ(line(bench, 0, PARAMS_cyclicPrefixSize), "40 01 00 00");
  EXPECT_EQ(startup(bench, 0, PARAMS_pad_1), "0a 0b 0c");
  EXPECT_EQ(startup(bench, 1, PARAMS_usMargin), "3c 00");
  EXPECT_EQ(startup(bench, 1, PARAMS_ClassifierUnicastMask), "ff ff ff 00 00 00");
  EXPECT_EQ(line(bench, 1, PARAMS_usRsRedundancy), "ff ff ff ff");
  EXPECT_FALSE(restartNeeded(bench, 0));
}

TEST(BoardFileParameters, HaveTheConsolesNames) {
  EXPECT_STREQ(parameterName(PARAMS_ParamsRevision), "ParamsRevision");
  EXPECT_STREQ(parameterName(PARAMS_maxGarunteedRate), "maxGarunteedRate");
  EXPECT_STREQ(parameterName(PARAMS_fraFirstStepNoRdtFrames), "fraFirstStepNoRdtFrames");
  EXPECT_STREQ(parameterName(PARAMS_enableFlowControl), "enableFlowControl");
  EXPECT_STREQ(parameterName(PARAMS_usRsRedundancy), "usRsRedundancy");
}
