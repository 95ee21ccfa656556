// Chip memory at the console: given these bytes, when this is typed, this is printed.
#include <cstdio>

#include "qvrcli/device/memory_commands.h"
#include "support/assertions.h"
#include "support/chip_identity.h"
#include "support/scarce_memory.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Bytes that count up, so that a wrong order or a missing piece shows.
Bytes counting(size_t number) {
  Bytes bytes(number);
  for (size_t i = 0; i < number; i++) {
    bytes[i] = static_cast<uint8_t>(i);
  }
  return bytes;
}

// The text between two positions of a byte list.
Bytes slice(const Bytes& bytes, size_t from, size_t length) {
  return {bytes.begin() + static_cast<long>(from), bytes.begin() + static_cast<long>(from + length)};
}

using ReadMemory = TypedConsole;

TEST_F(ReadMemory, ShowsTheBootRegisterAsALittleEndianNumber) {
  expect(opens(0) + reads(0, 0xE0000238, {0x10, 0x02, 0x80, 0x01}));
  EXPECT_THAT(typed("read memory 0 e0000238 4"), ElementsAre("e0000238: 01800210"));
}

TEST_F(ReadMemory, ShowsOneWordALine) {
  expect(opens(1) + reads(1, 0x100, counting(12)));
  EXPECT_THAT(typed("read memory 1 0x100 12 ne"),
              ElementsAre("     100: 03020100", "     104: 07060504", "     108: 0b0a0908"));
}

TEST_F(ReadMemory, FillsTheLastWordWithZeros) {
  expect(opens(0) + reads(0, 0x10, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66}));
  EXPECT_THAT(typed("read memory 0 10 6"), ElementsAre("      10: 44332211", "      14: 00006655"));
}

TEST_F(ReadMemory, ReadsAsMuchAsTheLimit) {
  Script script = opens(0);
  for (uint32_t done = 0; done < 65536; done += 900) {
    script = script + reads(0, done, Bytes(std::min<uint32_t>(900, 65536 - done), 0xA5));
  }
  expect(script);
  const Lines lines = typed("read memory 0 0 65536");
  EXPECT_EQ(lines.size(), 16384U);
  EXPECT_EQ(lines.back(), "    fffc: a5a5a5a5");
}

TEST_F(ReadMemory, RefusesABadAddress) {
  EXPECT_THAT(typed("read memory 0 zz 4"), ElementsAre("readmem invalid memaddr (zz)"));
  EXPECT_EQ(result(), 1);
}

TEST_F(ReadMemory, RefusesABadLength) {
  for (const char* length : {"0", "65537", "-4", "zz", "99999999999999999999"}) {
    EXPECT_THAT(
        typed(std::string("read memory 0 0 ") + length),
        ElementsAre(std::string("readmem invalid data len (") + length + ") - must be between 1 and 65536"));
    EXPECT_EQ(result(), 1);
  }
}

TEST_F(ReadMemory, RefusesAnUnknownDeviceAndAnUnknownLine) {
  EXPECT_THAT(typed("read memory 2 0 4"), ElementsAre("invalid device number"));
  EXPECT_THAT(typed("read memory 2 0 4 NE"), ElementsAre("invalid device number"));
  EXPECT_THAT(typed("read memory 2 0 4 fe"), ElementsAre("invalid line number"));
}

TEST_F(ReadMemory, GoesOnWithTheNearEndAfterAnotherWord) {
  expect(opens(0) + reads(0, 0, {1, 2, 3, 4}));
  EXPECT_THAT(typed("read memory 0 0 4 Fe"), ElementsAre("parameter must be ne or fe", "       0: 04030201"));
}

TEST_F(ReadMemory, ReportsALineThatIsDown) {
  expect(opens(0));
  EXPECT_THAT(typed("read memory 0 0 4 fe"), ElementsAre("readmem error (6)"));
  EXPECT_THAT(typed("read memory 0 0 4 FE"), ElementsAre("readmem error (6)"));
}

TEST_F(ReadMemory, ReadsTheFarEndOverTheLine) {
  ChipIdentity up;
  up.setLinkState(LS_SHOWTIME);
  expect(opens(0) + readsIdentity(0, up));
  typed("show device-info 0");
  const Bytes request = {2, 0, 4, 0, 1, 0, 0, 0, 0x38, 0x02, 0x00, 0xE0};
  const Bytes response = {2, 0x80, 4, 0, 1, 0, 0, 0, 0x38, 0x02, 0x00, 0xE0, 0x10, 0x02, 0x80, 0x01};
  expect(sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_READMEM, request, 16, response));
  EXPECT_THAT(typed("read memory 0 e0000238 4 fe"), ElementsAre("e0000238: 01800210"));
}

TEST_F(ReadMemory, ReportsAFailureOfEachRequest) {
  const Bytes bytes = counting(1800);
  const Script whole = reads(0, 0, slice(bytes, 0, 900)) + reads(0, 900, slice(bytes, 900, 900));
  expect(opens(0));
  for (size_t position = 0; position < 2; position++) {
    expect(whole.failingAt(position, EIO));
    EXPECT_THAT(typed("read memory 0 0 1800"), ElementsAre("readmem error (12)"));
    EXPECT_EQ(result(), CLI_OK);
  }
}

TEST_F(ReadMemory, ReportsAnAbsentDevice) {
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("read memory 1 0 4"), ElementsAre("readmem error (18)"));
}

TEST_F(ReadMemory, EndsTheProcessForAnOddLength) {
  EXPECT_ASSERTION(typed("read memory 0 0 3"), asserts(101, "Length must be an even number of bytes", 3));
}

TEST_F(ReadMemory, TakesThreeWordsOrFour) {
  constexpr const char* usage = "read memory <device-id | line-id> <address> <length> [(ne | fe)]";
  EXPECT_THAT(typed("read memory 0 0"), ElementsAre(usage));
  EXPECT_THAT(typed("read memory 0 0 4?"), ElementsAre(usage));
}

using ReadSBR = TypedConsole;

TEST_F(ReadSBR, ShowsTheWordAsItLiesInMemory) {
  expect(opens(0) + reads(0, 0xE0000238, {0x10, 0x02, 0x80, 0x01}));
  EXPECT_THAT(typed("read sbr"), ElementsAre("SBR=10028001"));
}

TEST_F(ReadSBR, ReadsTheFirstDeviceWhateverIsTyped) {
  expect(opens(0) + reads(0, 0xE0000238, {1, 2, 3, 4}));
  EXPECT_THAT(typed("read sbr 1"), ElementsAre("SBR=01020304"));
  EXPECT_THAT(typed("read sbr 0 1"), ElementsAre("read sbr <device-id> [ 0 ]"));
}

TEST_F(ReadSBR, ReportsAFailure) {
  expect(opens(0) + reads(0, 0xE0000238, {0, 0, 0, 0}).fails(EIO));
  EXPECT_THAT(typed("read sbr"), ElementsAre("Failed reading SBR for device 0"));
}

using WriteMemory = TypedConsole;

TEST_F(WriteMemory, WritesBytesInTheirOrder) {
  expect(opens(0) + writes(0, 0x20, {0x12, 0xAB}));
  EXPECT_THAT(typed("write memory 0 20 2 12:ab"), IsEmpty());
}

TEST_F(WriteMemory, StoresAWordMostSignificantByteFirst) {
  expect(opens(0) + writes(0, 0x20, {0x12, 0x34, 0x56, 0x78}) + writes(0, 0x20, {0x00, 0x00, 0x00, 0x05}));
  EXPECT_THAT(typed("write memory 0 0x20 4 0x12345678"), IsEmpty());
  EXPECT_THAT(typed("write memory 0 20 4 5"), IsEmpty());
}

TEST_F(WriteMemory, TakesFourBytesWithColonsAsBytes) {
  expect(opens(0) + writes(0, 0x20, {0x01, 0x02, 0x03, 0x04}));
  EXPECT_THAT(typed("write memory 0 20 4 1:2:3:4"), IsEmpty());
}

TEST_F(WriteMemory, WritesZerosForMissingBytesAndNoSurplusOnes) {
  expect(opens(0) + writes(0, 0, {0xFF, 0, 0, 0, 0, 0}) + writes(0, 0, {1, 2}));
  EXPECT_THAT(typed("write memory 0 0 6 ff"), IsEmpty());
  EXPECT_THAT(typed("write memory 0 0 2 1:2:3:4"), IsEmpty());
}

TEST_F(WriteMemory, SplitsALongWrite) {
  Bytes bytes(130, 0);
  bytes[0] = 0x77;
  expect(opens(0) + writes(0, 0x1000, slice(bytes, 0, 128)) + writes(0, 0x1080, slice(bytes, 128, 2)));
  EXPECT_THAT(typed("write memory 0 1000 130 77"), IsEmpty());
}

TEST_F(WriteMemory, TakesALengthWithoutDigitsAsZero) {
  expect(opens(0) + writes(0, 0, {}));
  EXPECT_THAT(typed("write memory 0 0 none 12"), IsEmpty());
}

TEST_F(WriteMemory, IgnoresSurplusWords) {
  expect(opens(0) + writes(0, 0, {1, 2}));
  EXPECT_THAT(typed("write memory 0 0 2 1:2 and more"), IsEmpty());
}

TEST_F(WriteMemory, RefusesBadArguments) {
  EXPECT_THAT(typed("write memory 2 0 2 1:2"), ElementsAre("invalid device number"));
  EXPECT_THAT(typed("write memory 0 0 \" \" 1:2"), ElementsAre("writemem invalid data len ( )"));
  EXPECT_THAT(typed("write memory 0 0 65537 1:2"), ElementsAre("writemem invalid data len (65537)"));
  EXPECT_THAT(typed("write memory 0 0 -2 1:2"), ElementsAre("writemem invalid data len (-2)"));
  EXPECT_THAT(typed("write memory 0 0 2 1ff"), ElementsAre("hex byte must be between 0x00 and 0xFF"));
  EXPECT_THAT(typed("write memory 0 0 2 12:zz"), ElementsAre("expecting hex byte, received zz"));
  EXPECT_THAT(typed("write memory 0 0 2 12::34"), ElementsAre("expecting hex byte, received "));
  EXPECT_THAT(typed("write memory 0 0 4 zz"), ElementsAre("expecting hex byte, received zz"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(WriteMemory, RefusesABadAddress) {
  EXPECT_THAT(typed("write memory 0 zz 2 1:2"), ElementsAre("writemem invalid memaddr (zz)"));
  EXPECT_EQ(result(), 1);
}

TEST_F(WriteMemory, ReportsAFailureOfEachRequest) {
  const Script whole = writes(0, 0, Bytes(128, 0)) + writes(0, 128, Bytes(2, 0));
  expect(opens(0));
  for (size_t position = 0; position < 2; position++) {
    expect(whole.failingAt(position, EIO));
    EXPECT_THAT(typed("write memory 0 0 130 0"), ElementsAre("writemem Failed (13)"));
  }
}

TEST_F(WriteMemory, ReportsAnAbsentDevice) {
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("write memory 1 0 2 0"), ElementsAre("writemem Failed (18)"));
}

TEST_F(WriteMemory, EndsTheProcessForAnOddLength) {
  EXPECT_ASSERTION(typed("write memory 0 0 1 12"), asserts(101, "Length must be an even number of bytes", 1));
}

TEST_F(WriteMemory, NeedsFourWords) {
  EXPECT_THAT(
      typed("write memory 0 0 2"),
      ElementsAre(
          "write memory <device-id> <address> <length> <data> : data either at xx:xx:xx... or hex value"));
}

class DumpMemory : public TypedConsole {
 protected:
  // What a dump prints on standard output, and behind it what it writes to its file.
  std::string dumped(uint32_t address, uint32_t length) {
    FILE* file = std::tmpfile();
    testing::internal::CaptureStdout();
    dumpMemoryToFile(file, 0, address, length);
    std::string text = testing::internal::GetCapturedStdout();
    std::rewind(file);
    for (int character = std::fgetc(file); character != EOF; character = std::fgetc(file)) {
      text += static_cast<char>(character);
    }
    std::fclose(file);
    return text;
  }
};

TEST_F(DumpMemory, WritesTheLinesOfReadMemory) {
  expect(opens(0) + reads(0, 0xE3100000, counting(8)));
  EXPECT_EQ(dumped(0xE3100000, 8), "e3100000: 03020100\ne3100004: 07060504\n");
}

TEST_F(DumpMemory, ReportsAFailedReadAndWritesZeros) {
  expect(opens(0) + reads(0, 0x40, Bytes(4, 0)).fails(EIO));
  EXPECT_EQ(dumped(0x40, 4),
            "Failed reading memory from 4 bytes from device 0 at address 00000040      40: 00000000\n");
}

// The address has capital letters in the report, and small ones in the file.
TEST_F(DumpMemory, ReportsAFailedReadOfTwoWordsAndWritesBoth) {
  expect(opens(0) + reads(0, 0xABCDEF00, Bytes(8, 0)).fails(EIO));
  EXPECT_EQ(dumped(0xABCDEF00, 8),
            "Failed reading memory from 8 bytes from device 0 at address ABCDEF00"
            "abcdef00: 00000000\nabcdef04: 00000000\n");
}

TEST_F(DumpMemory, ReportsThatThereIsNoMemory) {
  constexpr uint32_t much = 1024 * 1024;
  EXPECT_EQ(refusing(much, [this] { return dumped(0x40, much); }),
            "Failed allocating buffer of size 1048576 bytes\n");
}

}  // namespace
