// The chips' own programs: how their steps are carried out.
#include "qvrtest/device_programs.h"

#include "support/assertions.h"
#include "support/devices.h"

using namespace gfast;

namespace {

class DeviceProgram : public testing::Test {
 protected:
  void SetUp() override {
    openDevice(driver_, 0);
    openDevice(driver_, 1);
  }

  ExpectedRequests driver_{Script()};
};

TEST_F(DeviceProgram, DoesNothingForLengthZero) {
  EXPECT_EQ(QVR_executeProgram(nullptr, 0), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_executeProgram(nullptr, -1), QVR_E_STATUS_OK);
}

// The board's processor stores a word's most significant byte first.
TEST_F(DeviceProgram, RunsItsStepsInOrder) {
  const QVR_instruction_t program[] = {{QVR_MEMOP_WRITEMEM, 0, 0xA0000000, 0x11223344},
                                       {QVR_MEMOP_READMEM, 1, 0xA0000004, 47},
                                       {QVR_MEMOP_WRITEMEM, 1, 0xA0000008, 3},
                                       {QVR_MEMOP_READMEM, 0, 0xA000000C, 0}};
  driver_.expect(writes(0, 0xA0000000, {0x11, 0x22, 0x33, 0x44}) + reads(1, 0xA0000004, {0, 0, 1, 2}) +
                 writes(1, 0xA0000008, {0, 0, 0, 3}) + reads(0, 0xA000000C, {0xFF, 0xFF, 0xFF, 0xFE}));
  EXPECT_EQ(QVR_executeProgram(program, 4), QVR_E_STATUS_OK);
  EXPECT_EQ(testResults()[47], 0x0102);
  EXPECT_EQ(testResults()[0], -2);
}

TEST_F(DeviceProgram, SkipsAStepThatIsNeitherReadNorWrite) {
  const QVR_instruction_t program[] = {{static_cast<QVR_memop_t>(7), 0, 0xA0000000, 1},
                                       {QVR_MEMOP_WRITEMEM, 0, 0xA0000004, 2},
                                       {static_cast<QVR_memop_t>(7), 9, 0, 99}};
  driver_.expect(writes(0, 0xA0000004, {0, 0, 0, 2}));
  EXPECT_EQ(QVR_executeProgram(program, 3), QVR_E_STATUS_OK);
}

TEST_F(DeviceProgram, StopsAtTheFirstFailure) {
  const QVR_instruction_t program[] = {{QVR_MEMOP_WRITEMEM, 0, 4, 1},
                                       {QVR_MEMOP_READMEM, 0, 8, 5},
                                       {QVR_MEMOP_WRITEMEM, 0, 12, 1},
                                       {QVR_MEMOP_READMEM, 0, 16, 6}};
  const Script script = writes(0, 4, {0, 0, 0, 1}) + reads(0, 8, {0, 0, 0, 9}) + writes(0, 12, {0, 0, 0, 1}) +
                        reads(0, 16, {0, 0, 0, 9});
  for (size_t position = 0; position < script.size(); position++) {
    testResults().fill(-1);
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_EQ(QVR_executeProgram(program, 4), position % 2 == 0 ? QVR_E_MEMWRITE_ERROR : QVR_E_MEMREAD_ERROR);
    EXPECT_EQ(testResults()[5], position > 1 ? 9 : -1);
    EXPECT_EQ(testResults()[6], -1);
    driver_.verify();
  }
}

TEST_F(DeviceProgram, FailsForASlotThatDoesNotExist) {
  for (const uint32_t slot : {48U, 0xFFFFFFFFU}) {
    const QVR_instruction_t program[] = {{QVR_MEMOP_READMEM, 0, 4, slot}, {QVR_MEMOP_WRITEMEM, 0, 8, 1}};
    EXPECT_EQ(QVR_executeProgram(program, 2), QVR_E_INVALID_OPERATION);
  }
}

TEST_F(DeviceProgram, AssertsOnAnUnknownDevice) {
  for (const QVR_deviceId_t device : {2, 3, -1}) {
    const QVR_instruction_t program[] = {{QVR_MEMOP_WRITEMEM, device, 4, 1}};
    EXPECT_ASSERTION(QVR_executeProgram(program, 1), asserts(100, "Unknown device handle", device));
  }
}

}  // namespace
