#include <gtest/gtest.h>

#include "bench.h"

namespace {

constexpr const char* kShowtime = "[[device]]\nline = \"showtime\"\n";

}  // namespace

TEST(FarEnd, IsReachedInShowtimeOnly) {
  Bench bench("[[farend]]\nline = 0\nrequest = 5\nresponse = \"00 3c\"");
  EXPECT_EQ(bench.farEnd(0, 5), "ENOTCONN");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.farEnd(0, 5), "00 3c");
  bench.board.cutLoop(true);
  EXPECT_EQ(bench.farEnd(0, 5), "ENOTCONN");
}

TEST(FarEnd, AReplacedAnswerIsThatOfOneLineAndOneKind) {
  Bench bench(
      (std::string(kShowtime) + "[[farend]]\nline = 1\nrequest = 0\nresponse = \"01 02 03\"").c_str());
  EXPECT_EQ(bench.farEnd(1, 0), "01 02 03");
  EXPECT_EQ(bench.farEnd(0, 0).size(), 44U * 3 - 1);
  EXPECT_EQ(bench.farEnd(1, 1).size(), 56U * 3 - 1);
}

TEST(FarEnd, MayAnswerWithNothingOrAnError) {
  Bench bench((std::string(kShowtime) + "[[farend]]\nline = 0\nrequest = 1\nresponse = \"\"\n"
                                        "[[farend]]\nline = 0\nrequest = 2\nerrno = \"ETIMEDOUT\"")
                  .c_str());
  EXPECT_EQ(bench.farEnd(0, 1), "");
  EXPECT_EQ(bench.farEnd(0, 2), "ETIMEDOUT");
}

TEST(FarEnd, ALongAnswerEndsWithTheBuffer) {
  Bench bench(
      (std::string(kShowtime) + "[[farend]]\nline = 0\nrequest = 1\nresponse = \"01 02 03\"").c_str());
  EXPECT_EQ(bench.farEnd(0, 1, 2), "01 02");
  EXPECT_EQ(bench.farEnd(0, 1, 0), "");
}

TEST(FarEnd, ThereIsOneLineADeviceAndNoOtherMessage) {
  Bench bench(kShowtime);
  EXPECT_EQ(bench.farEnd(0, 1, 64, 1), "EINVAL");
  EXPECT_EQ(bench.farEnd(0, 1, 64, 0xFFFF), "EINVAL");
  EXPECT_EQ(bench.farEnd(0, MGMT_FAR_END_REQ_TYPE_LAST), "EINVAL");
  EXPECT_EQ(bench.farEnd(0, 0xFFFF), "EINVAL");
}
