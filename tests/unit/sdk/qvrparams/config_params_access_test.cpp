// Reading and writing parameters: the requests, their order and bytes, and what happens when one fails.
#include <numeric>
#include <tuple>

#include "chip/boot_register.h"
#include "support/assertions.h"
#include "support/trace_log.h"
#include "unit/sdk/qvrparams/parameters.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kOwnArea = 0xEC000000;
constexpr uint32_t kRestartBit = 0x10000;

enum : uint32_t {
  kNumber4,
  kNumber2,
  kSixBytes,
  kThreeBytes,
  kOfLine,
  kOfLineInSystemState,
  kOddOfLine,
  kOfDeviceInLineState
};

class ParameterAccess : public Parameters {
 protected:
  ParameterAccess() {
    load(64, {{kNumber4, 4, 0},
              {kNumber2, 2, 4},
              {kSixBytes, 6, 6},
              {kThreeBytes, 3, 12},
              {kOfLine, 4, 20, CONFIG_TYPE_PER_LINE, CONFIG_STATE_LINE},
              {kOfLineInSystemState, 4, 24, CONFIG_TYPE_PER_LINE, CONFIG_STATE_SYSTEM},
              {kOddOfLine, 1, 31, CONFIG_TYPE_PER_LINE, CONFIG_STATE_LINE},
              {kOfDeviceInLineState, 4, 40, CONFIG_TYPE_PER_DEVICE, CONFIG_STATE_LINE}});
  }

  // Reads a parameter of four bytes.
  uint32_t get(QVR_lineId_t line, uint32_t parameter) {
    uint32_t value = 0;
    EXPECT_EQ(QVR_getConfigParam(line, id(parameter), &value), QVR_E_STATUS_OK);
    return value;
  }

  static QVR_retval_t set(QVR_lineId_t line, uint32_t parameter, uint32_t value) {
    return QVR_setConfigParam(line, id(parameter), &value);
  }

  // The value of a parameter that the library has stored. It is returned when the read fails.
  uint32_t lastKnown(uint32_t parameter, uint32_t offset) {
    uint32_t value = 0;
    driver_.expect(readsWord(0, kArea + offset, 0).fails(EIO) + readsWord(0, kArea + offset, 0).fails(EIO));
    EXPECT_EQ(QVR_getConfigParam(0, id(parameter), &value), QVR_E_MEMREAD_ERROR);
    driver_.verify();
    return value;
  }

  TraceLog log_;
};

Script setsRestartBit(uint32_t sbr) {
  return readsWord(0, SBR_REG_ADDRESS, sbr) + writesWord(0, SBR_REG_ADDRESS, sbr | kRestartBit);
}

// ---- Reading ----

TEST_F(ParameterAccess, ReadsFromTheDeviceOfTheLine) {
  driver_.expect(reads(0, kArea, {0x78, 0x56, 0x34, 0x12}) + reads(1, kArea, {0x44, 0x33, 0x22, 0x11}));
  EXPECT_EQ(get(0, kNumber4), 0x12345678U);
  EXPECT_EQ(get(1, kNumber4), 0x11223344U);
}

TEST_F(ParameterAccess, ReadsTwoBytesAsA16BitNumber) {
  uint16_t value[2] = {0, 0xAAAA};
  driver_.expect(reads(0, kArea + 4, {0x34, 0x12}));
  EXPECT_EQ(QVR_getConfigParam(0, id(kNumber2), value), QVR_E_STATUS_OK);
  EXPECT_EQ(value[0], 0x1234);
  EXPECT_EQ(value[1], 0xAAAA);
}

TEST_F(ParameterAccess, CopiesSixBytesUnchanged) {
  const Bytes bytes{1, 2, 3, 4, 5, 6};
  Bytes value(7, 0xAA);
  driver_.expect(reads(0, kArea + 6, bytes));
  EXPECT_EQ(QVR_getConfigParam(0, id(kSixBytes), value.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(value, ElementsAre(1, 2, 3, 4, 5, 6, 0xAA));
  driver_.verify();

  const Bytes changed{1, 2, 3, 4, 5, 7};
  driver_.expect(writes(0, kArea + 6, changed) + writes(1, kArea + 6, changed) + setsRestartBit(0));
  EXPECT_EQ(QVR_setConfigParam(0, id(kSixBytes), changed.data()), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, ReadsAnOddLengthWithTheNextByteAndDropsIt) {
  Bytes value(4, 0xAA);
  driver_.expect(reads(0, kArea + 12, {1, 2, 3, 0x77}));
  EXPECT_EQ(QVR_getConfigParam(0, id(kThreeBytes), value.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(value, ElementsAre(1, 2, 3, 0xAA));
}

TEST_F(ParameterAccess, RetriesAFailedReadOnce) {
  driver_.expect(readsWord(0, kArea, 0).fails(EIO) + readsWord(0, kArea, 99));
  EXPECT_EQ(get(0, kNumber4), 99U);
}

TEST_F(ParameterAccess, ReturnsTheLastKnownValueAfterTwoFailedReads) {
  driver_.expect(readsWord(0, kArea, 55));
  EXPECT_EQ(get(0, kNumber4), 55U);
  EXPECT_EQ(lastKnown(kNumber4, 0), 55U);
}

TEST_F(ParameterAccess, ReadsALineParameterFromTheCommonArea) {
  driver_.expect(writesWord(1, kOwnArea + 20, 5) + readsWord(1, kArea + 20, 3));
  EXPECT_EQ(set(1, kOfLine, 5), QVR_E_STATUS_OK);
  EXPECT_EQ(get(1, kOfLine), 3U);
}

TEST_F(ParameterAccess, RefusesAParameterThatIsNotInTheDictionary) {
  uint32_t value = 7;
  EXPECT_EQ(QVR_getConfigParam(1, id(125), &value), QVR_E_UNSUPPORTED_PARAMETER);
  EXPECT_EQ(QVR_setConfigParam(1, id(125), &value), QVR_E_UNSUPPORTED_PARAMETER);
  EXPECT_EQ(value, 7U);
  EXPECT_THAT(log_.lines(),
              ElementsAre(warns("QVR_getConfigParam", "Parameter with ID=125 not found in dictionary\n"),
                          warns("QVR_setConfigParam", "Parameter with ID=125 not found in dictionary\n")));
}

TEST_F(ParameterAccess, AssertsThatTheLineIsValid) {
  uint32_t value = 0;
  for (const QVR_lineId_t line : {-1, 2}) {
    EXPECT_ASSERTION(QVR_getConfigParam(line, id(0), &value),
                     asserts(200, "Invalid Line Identifier", line, "../qvrline"));
    EXPECT_ASSERTION(QVR_setConfigParam(line, id(0), &value),
                     asserts(200, "Invalid Line Identifier", line, "../qvrline"));
  }
}

// ---- Writing ----

TEST_F(ParameterAccess, WritesASystemParameterToBothDevicesAndRequestsARestart) {
  const Bytes written{0x78, 0x56, 0x34, 0x12};
  driver_.expect(writes(0, kArea, written) + writes(1, kArea, written) + setsRestartBit(0x01800000) +
                 readsWord(0, SBR_REG_ADDRESS, 0x01810000));
  EXPECT_EQ(set(1, kNumber4, 0x12345678), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_systemRestartRequired(), TRUE);
}

TEST_F(ParameterAccess, DoesNotWriteAnUnchangedSystemParameter) {
  driver_.expect(readsWord(0, kArea, 5));
  EXPECT_EQ(get(0, kNumber4), 5U);
  driver_.verify();
  EXPECT_EQ(set(0, kNumber4, 5), QVR_E_STATUS_OK);
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, 0x01800000));
  EXPECT_EQ(QVR_systemRestartRequired(), FALSE);
}

TEST_F(ParameterAccess, RemembersAWrittenParameter) {
  driver_.expect(writesWord(0, kArea, 5) + writesWord(1, kArea, 5) + setsRestartBit(0));
  EXPECT_EQ(set(0, kNumber4, 5), QVR_E_STATUS_OK);
  EXPECT_EQ(set(0, kNumber4, 5), QVR_E_STATUS_OK);
  EXPECT_EQ(set(1, kNumber4, 5), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, WritesTwoBytesForA16BitNumber) {
  const uint16_t value = 0x1234;
  driver_.expect(writes(0, kArea + 4, {0x34, 0x12}) + writes(1, kArea + 4, {0x34, 0x12}) + setsRestartBit(0));
  EXPECT_EQ(QVR_setConfigParam(0, id(kNumber2), &value), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, WritesALineParameterToTheLinesOwnArea) {
  driver_.expect(writesWord(1, kOwnArea + 20, 5));
  EXPECT_EQ(set(1, kOfLine, 5), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, ChoosesTheOwnAreaByTheLinesIndexOnItsDevice) {
  addLine(1, 1, 3, FALSE);
  driver_.expect(writesWord(1, 0xEC300000 + 20, 5));
  EXPECT_EQ(set(1, kOfLine, 5), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, WritesALineParameterInSystemStateAsASystemParameter) {
  driver_.expect(writesWord(0, kArea + 24, 5) + writesWord(1, kArea + 24, 5) + setsRestartBit(0));
  EXPECT_EQ(set(1, kOfLineInSystemState, 5), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, WritesADeviceParameterInLineStateAsASystemParameter) {
  driver_.expect(writesWord(0, kArea + 40, 5) + writesWord(1, kArea + 40, 5) + setsRestartBit(0));
  EXPECT_EQ(set(1, kOfDeviceInLineState, 5), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, KeepsTheByteBehindAnOddLengthOnEachDevice) {
  const Bytes value{1, 2, 3};
  driver_.expect(reads(0, kArea + 14, {0, 0x77}) + writes(0, kArea + 12, {1, 2, 3, 0x77}) +
                 reads(1, kArea + 14, {0, 0x88}) + writes(1, kArea + 12, {1, 2, 3, 0x88}) +
                 setsRestartBit(0));
  EXPECT_EQ(QVR_setConfigParam(0, id(kThreeBytes), value.data()), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, SkipsADeviceWhoseNextByteCannotBeRead) {
  const Bytes value{1, 2, 3};
  driver_.expect(reads(0, kArea + 14, {0, 0}).fails(EIO) + reads(1, kArea + 14, {0, 0x88}) +
                 writes(1, kArea + 12, {1, 2, 3, 0x88}) + setsRestartBit(0));
  EXPECT_EQ(QVR_setConfigParam(0, id(kThreeBytes), value.data()), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, KeepsTheByteBehindAnOddLineParameterInBothAreas) {
  const uint8_t value = 9;
  driver_.expect(reads(1, kOwnArea + 31, {0, 0x55}) + writes(1, kOwnArea + 31, {9, 0x55}).fails(EIO) +
                 reads(1, kArea + 31, {0, 0x66}) + writes(1, kArea + 31, {9, 0x66}));
  EXPECT_EQ(QVR_setConfigParam(1, id(kOddOfLine), &value), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, DoesNotWriteAnOddLineParameterWhoseNextByteCannotBeRead) {
  const uint8_t value = 9;
  driver_.expect(reads(1, kOwnArea + 31, {0, 0}).fails(EIO) + reads(1, kArea + 31, {0, 0}).fails(EIO));
  EXPECT_EQ(QVR_setConfigParam(1, id(kOddOfLine), &value), QVR_E_MEMREAD_ERROR);
}

// ---- Failed writes ----

TEST_F(ParameterAccess, WritesToTheCommonAreaWhenTheOwnAreaFails) {
  driver_.expect(writesWord(1, kOwnArea + 20, 5).fails(EIO) + writesWord(1, kArea + 20, 5));
  EXPECT_EQ(set(1, kOfLine, 5), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, FailsAfterTwoFailedWritesButRemembersTheValue) {
  driver_.expect(writesWord(0, kOwnArea + 20, 5).fails(EIO) + writesWord(0, kArea + 20, 5).fails(EIO));
  EXPECT_EQ(set(0, kOfLine, 5), QVR_E_MEMWRITE_ERROR);
  driver_.verify();
  EXPECT_EQ(lastKnown(kOfLine, 20), 5U);
  EXPECT_EQ(set(0, kOfLine, 5), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, IgnoresFailedWritesOfASystemParameter) {
  driver_.expect(writesWord(0, kArea, 5).fails(EIO) + writesWord(1, kArea, 5) + setsRestartBit(0));
  EXPECT_EQ(set(0, kNumber4, 5), QVR_E_STATUS_OK);
  driver_.expect(writesWord(0, kArea, 6) + writesWord(1, kArea, 6).fails(EIO) + setsRestartBit(0));
  EXPECT_EQ(set(0, kNumber4, 6), QVR_E_STATUS_OK);
  driver_.expect(writesWord(0, kArea, 7).fails(EIO) + writesWord(1, kArea, 7).fails(EIO) + setsRestartBit(0));
  EXPECT_EQ(set(0, kNumber4, 7), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, WritesAgainToTheLinesDeviceWhenTheRestartBitFails) {
  const Script both = writesWord(0, kArea, 5) + writesWord(1, kArea, 5);
  driver_.expect(both + readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO) + writesWord(1, kArea, 5));
  EXPECT_EQ(set(1, kNumber4, 5), QVR_E_STATUS_OK);
  driver_.verify();

  const Script again = writesWord(0, kArea, 6) + writesWord(1, kArea, 6);
  driver_.expect(again + setsRestartBit(0).fails(EIO) + writesWord(0, kArea, 6).fails(EIO));
  EXPECT_EQ(set(0, kNumber4, 6), QVR_E_MEMWRITE_ERROR);
}

TEST_F(ParameterAccess, WritesASystemParameterToDevice0WhenDevice1IsAbsent) {
  driver_.expect(closes(0) + closes(1) + rediscovers() + opens(0) + readsIdentity(0, {}) +
                 opens(1).fails(ENOENT));
  QVR_rediscoverDevices();
  driver_.expect(writesWord(0, kArea, 5) + opens(1).fails(ENOENT) + setsRestartBit(0));
  EXPECT_EQ(set(0, kNumber4, 5), QVR_E_STATUS_OK);
  driver_.expect(opens(1).fails(ENOENT).times(2));
  uint32_t value = 0;
  EXPECT_EQ(QVR_getConfigParam(1, id(kNumber4), &value), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(value, 5U);
  driver_.expect(opens(1).fails(ENOENT).times(2));
  EXPECT_EQ(set(1, kOfLine, 5), QVR_E_DEVICE_NOT_EXISTS);
}

// ---- The whole area ----

Bytes countingBytes(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; i++) {
    bytes[i] = static_cast<uint8_t>(i);
  }
  return bytes;
}

TEST_F(ParameterAccess, LoadsTheAreaOfDevice0ForAnyLine) {
  driver_.expect(reads(0, kArea, countingBytes(64)));
  EXPECT_EQ(QVR_loadConfigParams(77), QVR_E_STATUS_OK);
  driver_.verify();
  EXPECT_EQ(lastKnown(kOfLine, 20), 0x17161514U);
  EXPECT_EQ(set(1, kOfLine, 0x17161514), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, SavesTheAreaWithItsChanges) {
  driver_.expect(reads(0, kArea, countingBytes(64)) + writesWord(1, kOwnArea + 20, 0xAABBCCDD));
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_STATUS_OK);
  EXPECT_EQ(set(1, kOfLine, 0xAABBCCDD), QVR_E_STATUS_OK);
  driver_.verify();
  Bytes saved = countingBytes(64);
  store_le32(&saved[20], 0xAABBCCDD);
  driver_.expect(writes(0, kArea, saved));
  EXPECT_EQ(QVR_saveConfigParams(77), QVR_E_STATUS_OK);
}

TEST_F(ParameterAccess, FailsWhenTheAreaCannotBeReadOrWritten) {
  driver_.expect(reads(0, kArea, countingBytes(64)) + reads(0, kArea, Bytes(64)).fails(EIO));
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_MEMREAD_ERROR);
  driver_.verify();
  EXPECT_EQ(lastKnown(kNumber4, 0), 0x03020100U);
  driver_.expect(writes(0, kArea, countingBytes(64)).fails(EIO));
  EXPECT_EQ(QVR_saveConfigParams(0), QVR_E_MEMWRITE_ERROR);
}

TEST_F(Parameters, KeepTheByteBehindAnAreaOfAnOddSize) {
  load(5, {{0, 4, 0}});
  driver_.expect(reads(0, kArea, {1, 2, 3, 4, 5, 0x66}));
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_STATUS_OK);
  driver_.expect(reads(0, kArea + 4, {0, 0x77}) + writes(0, kArea, {1, 2, 3, 4, 5, 0x77}));
  EXPECT_EQ(QVR_saveConfigParams(0), QVR_E_STATUS_OK);
  driver_.expect(reads(0, kArea + 4, {0, 0x77}).fails(EIO));
  EXPECT_EQ(QVR_saveConfigParams(0), QVR_E_MEMREAD_ERROR);
}

TEST_F(Parameters, AreTransferredInPiecesWhenTheAreaIsLarge) {
  load(902, {{0, 4, 896}, {1, 2, 900}});
  const Bytes area = countingBytes(902);
  driver_.expect(readsInPieces(0, kArea, area));
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_STATUS_OK);
  for (size_t at = 0; at < area.size(); at += 128) {
    const auto from = area.begin() + static_cast<long>(at);
    const auto to = area.begin() + static_cast<long>(std::min<size_t>(at + 128, area.size()));
    driver_.expect(writes(0, kArea + static_cast<uint32_t>(at), Bytes(from, to)));
  }
  EXPECT_EQ(QVR_saveConfigParams(0), QVR_E_STATUS_OK);
}

TEST_F(Parameters, KeepThePartOfTheAreaThatWasRead) {
  load(902, {{0, 4, 896}, {1, 2, 900}});
  driver_.expect(readsInPieces(0, kArea, countingBytes(902)).fails(EIO));
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_MEMREAD_ERROR);
  const uint32_t known = 0x83828180;
  EXPECT_EQ(QVR_setConfigParam(0, id(0), &known), QVR_E_STATUS_OK);
  const uint16_t unknown = 0;
  EXPECT_EQ(QVR_setConfigParam(0, id(1), &unknown), QVR_E_STATUS_OK);
}

// ---- Restart, reboot ----

TEST_F(ParameterAccess, ReadsTheRestartBitOfDevice0) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, ~kRestartBit) + readsWord(0, SBR_REG_ADDRESS, kRestartBit) +
                 readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO));
  EXPECT_EQ(QVR_systemRestartRequired(), FALSE);
  EXPECT_EQ(QVR_systemRestartRequired(), TRUE);
  EXPECT_EQ(QVR_systemRestartRequired(), TRUE);
}

TEST(RestartRequired, NeedsNoDictionaryAndIsTrueWithoutDevice0) {
  ExpectedRequests driver(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0));
  EXPECT_EQ(QVR_systemRestartRequired(), FALSE);
  driver.expect(closes(0) + rediscovers() + opens(0).fails(ENOENT) + opens(1).fails(ENOENT));
  QVR_rediscoverDevices();
  driver.expect(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_systemRestartRequired(), TRUE);
}

TEST_F(ParameterAccess, KeepsTheDictionaryAfterARediscovery) {
  driver_.expect(closes(0) + closes(1) + rediscovers() + opens(0) + readsIdentity(0, {}) + opens(1) +
                 readsIdentity(1, {}));
  QVR_rediscoverDevices();
  driver_.expect(readsWord(0, kArea, 42));
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_EQ(get(0, kNumber4), 42U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(kSixBytes))->param_offset, 6U);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

// ---- The limits of an entry ----

class FarParameters : public Parameters {
 protected:
  static Bytes counting(size_t length, uint8_t first) {
    Bytes bytes(length);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
  }
};

TEST_F(FarParameters, LieAtOffsetsUpTo2047) {
  load(2048, {{0, 4, 1024},
              {1, 4, 2044},
              {2, 4, 1020, CONFIG_TYPE_PER_LINE, CONFIG_STATE_LINE},
              {3, 4, 1500, CONFIG_TYPE_PER_LINE, CONFIG_STATE_LINE}});
  uint32_t value = 0;
  driver_.expect(readsWord(0, kArea + 1024, 11) + readsWord(0, kArea + 2044, 12));
  EXPECT_EQ(QVR_getConfigParam(0, id(0), &value), QVR_E_STATUS_OK);
  EXPECT_EQ(value, 11U);
  EXPECT_EQ(QVR_getConfigParam(0, id(1), &value), QVR_E_STATUS_OK);
  EXPECT_EQ(value, 12U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(1))->param_offset, 2044U);
  driver_.expect(writesWord(1, kOwnArea + 1500, 12));
  EXPECT_EQ(QVR_setConfigParam(1, id(3), &value), QVR_E_STATUS_OK);
}

TEST_F(FarParameters, HaveUpTo511Bytes) {
  load(1024, {{0, 8, 0}, {1, 511, 8}, {2, 256, 520}});
  for (const auto& [parameter, length, offset] : {std::tuple{0U, 8U, 0U}, {1U, 511U, 8U}, {2U, 256U, 520U}}) {
    const Bytes bytes = counting(length, 3);
    Bytes inChip = bytes;
    inChip.resize(length + length % 2, 0x77);
    Bytes value(length + 1, 0xAA);
    driver_.expect(reads(0, kArea + offset, inChip));
    EXPECT_EQ(QVR_getConfigParam(0, id(parameter), value.data()), QVR_E_STATUS_OK);
    EXPECT_EQ(value.back(), 0xAA);
    value.pop_back();
    EXPECT_EQ(value, bytes);
  }
  driver_.verify();
  const Bytes changed = counting(8, 4);
  driver_.expect(writes(0, kArea, changed) + writes(1, kArea, changed) + setsRestartBit(0));
  EXPECT_EQ(QVR_setConfigParam(0, id(0), changed.data()), QVR_E_STATUS_OK);
}

}  // namespace
