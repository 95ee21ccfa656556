#include <gtest/gtest.h>

#include "unit/virtual-board/measured/counters.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint16_t kInventoryRequest = MGMT_FAR_END_REQ_TYPE_INVENTORY;
constexpr uint16_t kRead = MGMT_FAR_END_REQ_TYPE_READMEM;
constexpr uint16_t kWrite = MGMT_FAR_END_REQ_TYPE_WRITEMEM;
constexpr uint16_t kPmd = MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ;

}  // namespace

TEST(FarEnd, IsReachedInShowtimeOnly) {
  Bench bench("[[farend]]\nline = 0\nrequest = 5\nresponse = \"00 3c\"");
  EXPECT_EQ(bench.farEnd(0, 5), "ENOTCONN");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.farEnd(0, 5), "00 3c");
  bench.board.cutLoop(true);
  EXPECT_EQ(bench.farEnd(0, 5), "ENOTCONN");
}

TEST(FarEnd, AReplacedAnswerIsForOneLineAndOneRequest) {
  Bench bench(withShowtime("[[farend]]\nline = 1\nrequest = 0\nresponse = \"01 02 03\""));
  EXPECT_EQ(bench.farEnd(1, 0), "01 02 03");
  EXPECT_EQ(bench.farEnd(0, 0).size(), 44U * 3 - 1);
  EXPECT_EQ(bench.farEnd(1, 1).size(), 56U * 3 - 1);
}

TEST(FarEnd, AReplacedAnswerMayBeEmptyOrAnError) {
  Bench bench(
      withShowtime("[[farend]]\nline = 0\nrequest = 1\nresponse = \"\"\n"
                   "[[farend]]\nline = 0\nrequest = 2\nerrno = \"ETIMEDOUT\""));
  EXPECT_EQ(bench.farEnd(0, 1), "");
  EXPECT_EQ(bench.farEnd(0, 2), "ETIMEDOUT");
}

TEST(FarEnd, ALongAnswerIsCutToTheBuffer) {
  Bench bench(withShowtime("[[farend]]\nline = 0\nrequest = 1\nresponse = \"01 02 03\""));
  EXPECT_EQ(bench.farEnd(0, 1, 2), "01 02");
  EXPECT_EQ(bench.farEnd(0, 1, 0), "");
}

TEST(FarEnd, OtherLinesAndUnknownMessagesAreRefused) {
  Bench bench(kShowtime);
  EXPECT_EQ(bench.farEnd(0, 1, 64, 1), "EINVAL");
  EXPECT_EQ(bench.farEnd(0, 1, 64, 0xFFFF), "EINVAL");
  EXPECT_EQ(bench.farEnd(0, MGMT_FAR_END_REQ_TYPE_LAST), "EINVAL");
  EXPECT_EQ(bench.farEnd(0, 0xFFFF), "EINVAL");
}

TEST(FarEnd, ReturnsTheCountersOfTheOtherEnd) {
  Bench bench(kShowtime);
  bench.wait(600);
  const auto told = farCounters(bench, 0);
  EXPECT_EQ(told.rtxUc, framer(bench, 1).rtxuc);
  EXPECT_EQ(told.rtxTx, framer(bench, 1).numOfRetTxDTUs);
  EXPECT_EQ(told.errorFreeBitsCounter, derived(bench, 1).errorFreeBits);
  EXPECT_EQ(told.eftrMin, derived(bench, 1).EFTR_min);
  EXPECT_GT(told.fec, 0U);
}

TEST(FarEnd, InventoryNamesTheOtherModem) {
  Bench bench("[[device]]\nline = \"showtime\"\n[[device]]\nside = \"cpe\"\nfirmware = \"2.7.1.4\"");
  const auto record = fromHex(bench.farEnd(0, kInventoryRequest));
  ASSERT_EQ(record.size(), 56U);
  EXPECT_EQ(hex(record.data(), 8), "56 42 48 4f 4d 45 00 00");  // VBOARD
  EXPECT_STREQ(reinterpret_cast<const char*>(&record[8]), "7.1.4 v2");
  EXPECT_STREQ(reinterpret_cast<const char*>(&record[24]), "VB02005E000002");
}

TEST(FarEnd, ItsParametersArePackedAndLittleEndian) {
  Bench bench(kShowtime);
  const auto bytes = fromHex(bench.farEnd(0, kPmd));
  ASSERT_EQ(bytes.size(), 14U);
  EXPECT_EQ(load_le16(&bytes[0]), framer(bench, 1).snrMargin);
  EXPECT_EQ(load_le32(&bytes[2]), framer(bench, 1).attainableNdr);
  EXPECT_EQ(load_le16(&bytes[6]), 30U);
  EXPECT_EQ(load_le16(&bytes[8]), 10U);
  EXPECT_EQ(load_le16(&bytes[10]), framer(bench, 1).rmcSnrMargin);
  // The power of 4 dBm after 100 m, summed over the subcarriers, in 0.1 dBm.
  EXPECT_NEAR(static_cast<int16_t>(load_le16(&bytes[12])), -41, 1);
}

TEST(FarEnd, MemoryIsReadFromTheOtherChip) {
  Bench bench(kShowtime);
  bench.write(1, 0xE8000010, "01 02 03 04 05");
  EXPECT_EQ(bench.ask(0, kRead, "02 00 05 00 34 12 00 00 10 00 00 e8"),
            "02 80 05 00 34 12 00 00 10 00 00 e8 01 02 03 04 05");
  // The same bytes as the other chip's host reads.
  EXPECT_EQ(bench.ask(0, kRead, "02 00 54 01 01 00 00 00 00 00 44 e2").substr(36),
            bench.read(1, kFramerRaw, 340));
}

TEST(FarEnd, MemoryIsReadFromTheRemoteModem) {
  Bench bench("[board]\ndevices = 1\n[[device]]\nline = \"showtime\"");
  EXPECT_EQ(bench.ask(0, kRead, "02 00 04 00 01 00 00 00 38 02 00 e0"),
            "02 80 04 00 01 00 00 00 38 02 00 e0 00 00 80 01");
}

TEST(FarEnd, MemoryIsWrittenToTheOtherChip) {
  Bench bench(kShowtime);
  EXPECT_EQ(bench.ask(1, kWrite, "03 00 02 00 07 00 00 00 00 00 00 e8 aa bb"),
            "03 80 02 00 07 00 00 00 00 00 00 e8");
  EXPECT_EQ(bench.read(0, 0xE8000000, 3), "aa bb 00");
}

TEST(FarEnd, WrongMemoryRequestsAreRefused) {
  Bench bench(kShowtime);
  const struct {
    const char* what;
    uint16_t type;
    const char* body;
    const char* response;
  } requests[] = {
      {"nothing", kRead, "", "ff ff 00 00 00 00 00 00 00 00 00 00"},
      {"short header", kRead, "02 00 04 00 05", "ff ff 00 00 05 00 00 00 00 00 00 00"},
      {"wrong opcode", kRead, "03 00 04 00 05 00 00 00 00 00 00 e8", "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"no bytes", kRead, "02 00 00 00 05 00 00 00 00 00 00 e8", "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"too many", kRead, "02 00 01 02 05 00 00 00 00 00 00 e8", "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"absurd length", kRead, "02 00 ff ff 05 00 00 00 00 00 00 e8", "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"trailing bytes", kRead, "02 00 04 00 05 00 00 00 00 00 00 e8 00",
       "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"unmapped", kRead, "02 00 04 00 05 00 00 00 00 00 00 20", "ff ff 00 00 05 00 00 00 00 00 00 20"},
      {"past the end", kRead, "02 00 05 00 05 00 00 00 fc ff ff ff", "ff ff 00 00 05 00 00 00 fc ff ff ff"},
      {"too few to write", kWrite, "03 00 03 00 05 00 00 00 00 00 00 e8 aa bb",
       "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"too many to write", kWrite, "03 00 01 00 05 00 00 00 00 00 00 e8 aa bb",
       "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"read as a write", kWrite, "02 00 01 00 05 00 00 00 00 00 00 e8 aa",
       "ff ff 00 00 05 00 00 00 00 00 00 e8"},
      {"unmapped write", kWrite, "03 00 01 00 05 00 00 00 00 00 00 10 aa",
       "ff ff 00 00 05 00 00 00 00 00 00 10"},
  };
  for (const auto& each : requests) {
    EXPECT_EQ(bench.ask(0, each.type, each.body), each.response) << each.what;
  }
  EXPECT_EQ(bench.read(1, 0xE8000000, 2), "00 00");
}

TEST(FarEnd, DoesNotAnswerAFirmwareDownload) {
  Bench bench(kShowtime);
  EXPECT_EQ(bench.farEnd(0, MGMT_FAR_END_REQ_TYPE_FW_DOWNLOAD), "EIO");
}

TEST(FarEnd, EveryAnswerCanBeReplaced) {
  for (uint16_t type = 0; type < MGMT_FAR_END_REQ_TYPE_LAST; type++) {
    const std::string toml = std::string(kShowtime) + "[[farend]]\nline = 0\nresponse = \"aa 0" +
                             std::to_string(type) + "\"\nrequest = " + std::to_string(type);
    Bench bench(toml);
    EXPECT_EQ(bench.farEnd(0, type), "aa 0" + std::to_string(type));
    EXPECT_NE(bench.farEnd(1, type), "aa 0" + std::to_string(type));
  }
}

TEST(FarEnd, AResetOfItDropsTheLine) {
  Bench bench(kShowtime);
  EXPECT_EQ(bench.ask(0, kWrite, "03 00 04 00 01 00 00 00 14 00 00 e0 00 00 00 80").substr(0, 5), "03 80");
  EXPECT_EQ(bench.farEnd(0, kPmd), "ENOTCONN");
  bench.wait(10);
  EXPECT_EQ(bench.events(1), "boot 2>3 3>4 4>5 5>6");
}
