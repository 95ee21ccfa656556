// Programs under a desk: device_user does what a case is about and says whether it was right, and the board
// says what it saw.
#include "gfast-desk/desk/desk.h"

#include <gtest/gtest.h>

#include "support/expected_requests.h"
#include "unit/device-files/counting_board.h"

using namespace gfast::desk;

namespace {

int run(Driver& board, const std::string& scenario) {
  Desk desk({DEVICE_USER, scenario});
  return desk.run(board);
}

std::string nameOf(const testing::TestParamInfo<const char*>& scenario) {
  std::string name = scenario.param;
  std::erase(name, '-');
  return name;
}

class DeviceFiles : public testing::TestWithParam<const char*> {};

TEST_P(DeviceFiles, AreAsAProgramExpects) {
  CountingBoard board;
  EXPECT_EQ(run(board, GetParam()), 0);
  EXPECT_GT(board.opened(), 0);
  EXPECT_EQ(board.open(), 0U);
}

INSTANTIATE_TEST_SUITE_P(All, DeviceFiles,
                         testing::Values("opens", "refusals", "copies", "processes", "executes",
                                         "other-files", "pointers", "sizes", "readiness", "threads",
                                         "signals"),
                         nameOf);

TEST(RediscoveryFile, AsksTheDriverWhenA1IsWritten) {
  CountingBoard board;
  EXPECT_EQ(run(board, "rediscovers"), 0);
  EXPECT_EQ(board.rediscoveries(), 2);
}

// Every byte of every request, and what comes back, through the class that runs on the board.
TEST(KernelDriver, AsksWhatTheLibraryAsksOfIt) {
  const Bytes bytes{1, 2, 3, 4};
  ExpectedRequests board(opens(0) + reads(0, 0xE0000041, bytes) + writes(0, 0xE0000041, bytes) +
                         reads(0, 0xE0000041, bytes).fails(EIO) +
                         readsEvent(0, {0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0}) + opens(1).fails(ENODEV) +
                         closes(0) + rediscovers() + opens(1) + closes(1));
  EXPECT_EQ(run(board, "kernel-driver"), 0);
}

#ifdef __x86_64__
class ForeignProgram : public testing::TestWithParam<const char*> {};

TEST_P(ForeignProgram, IsEndedWithOneLine) {
  CountingBoard board;
  testing::internal::CaptureStderr();
  EXPECT_EQ(run(board, GetParam()), kCannotServe);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "gfast-desk: " DEVICE_USER ": not a program with 64-bit pointers for this processor\n");
}

INSTANTIATE_TEST_SUITE_P(All, ForeignProgram, testing::Values("call-32-bit", "call-short-pointers"), nameOf);
#endif

}  // namespace
