// Management messages to the far end.
#include "support/chip_identity.h"
#include "support/expected_requests.h"
#include "support/trace_log.h"

using namespace gfast;

namespace {

using testing::ElementsAre;

const Bytes kRequest{1, 2, 3, 4};
const Bytes kResponse{9, 8, 7, 6, 5, 4};

Script sends() {
  return sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_READMEM, kRequest, 16, kResponse);
}

class FarEnd : public testing::Test {
 protected:
  // The device answers with its line in this state.
  void lineIs(G9701_linkState_t state) {
    ChipIdentity chip;
    chip.setLinkState(state);
    driver_.expect(opens(0) + readsIdentity(0, chip));
    ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  }

  QVR_retval_t send(QVR_deviceId_t device = 0, uint16_t narrowLine = 0) {
    std::copy(kRequest.begin(), kRequest.end(), message_.begin());
    return QVR_sendMsgToFarEnd(device, narrowLine, MGMT_FAR_END_REQ_TYPE_READMEM, message_.data(), 4, 16,
                               &responseLength_);
  }

  ExpectedRequests driver_{Script()};
  const TraceLog trace_;
  Bytes message_ = Bytes(16);
  uint32_t responseLength_ = 77;
};

TEST_F(FarEnd, ResponseReplacesTheMessageInItsBuffer) {
  lineIs(LS_SHOWTIME);
  driver_.expect(sends());
  EXPECT_EQ(send(), QVR_E_STATUS_OK);
  EXPECT_EQ(responseLength_, kResponse.size());
  EXPECT_EQ(Bytes(message_.begin(), message_.begin() + 6), kResponse);
}

TEST_F(FarEnd, SendsNothingToALineOutsideShowtime) {
  lineIs(LS_INIT_TRAIN);
  EXPECT_EQ(send(), QVR_E_LINE_NOT_ACTIVE);
  EXPECT_EQ(responseLength_, 0U);
}

TEST_F(FarEnd, SendsNothingToALineTheDeviceDoesNotHave) {
  lineIs(LS_SHOWTIME);
  EXPECT_EQ(send(0, 1), QVR_E_LINE_NOT_ACTIVE);
  EXPECT_EQ(send(0, 0xFFFF), QVR_E_LINE_NOT_ACTIVE);
}

TEST_F(FarEnd, SendsNothingBeforeTheDeviceWasRead) {
  driver_.expect(opens(0));
  EXPECT_EQ(send(), QVR_E_LINE_NOT_ACTIVE);
}

TEST_F(FarEnd, FailsWithoutTheDevice) {
  driver_.expect(opens(0).fails(ENOENT));
  EXPECT_EQ(send(), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(responseLength_, 0U);
  EXPECT_EQ(send(2), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(send(-1), QVR_E_DEVICE_NOT_EXISTS);
}

TEST_F(FarEnd, LogsARefusedMessageUnderLine1953) {
  lineIs(LS_SHOWTIME);
  driver_.expect(sends().fails(ETIMEDOUT));
  EXPECT_EQ(send(), QVR_E_FAILED_SENDING_FAR_END_MSG);
  EXPECT_EQ(responseLength_, 0U);
  EXPECT_THAT(trace_.lines(), ElementsAre("[LOG_ERR] QVR_sendMsgToFarEnd:1953 ioctl: farendmsg error - "
                                          "Connection timed out copied 0\n"));
}

TEST_F(FarEnd, LogsHowMuchWasCopiedBeforeTheFailure) {
  lineIs(LS_SHOWTIME);
  driver_.expect(sends().fails(EIO, 3));
  EXPECT_EQ(send(), QVR_E_FAILED_SENDING_FAR_END_MSG);
  EXPECT_EQ(responseLength_, 0U);
  EXPECT_THAT(trace_.lines(), ElementsAre("[LOG_ERR] QVR_sendMsgToFarEnd:1953 ioctl: farendmsg error - "
                                          "Input/output error copied 3\n"));
}

}  // namespace
