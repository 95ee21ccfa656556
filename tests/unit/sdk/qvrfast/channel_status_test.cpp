// The channel status of each direction, read at either side of a line.
#include "support/assertions.h"
#include "support/channel_records.h"
#include "support/devices.h"
#include "support/lines.h"

using namespace gfast;

namespace {

using ChannelGetter = QVR_retval_t (*)(QVR_lineId_t, QVR_channelStatus_t*);

// The direction that the device receives, and the one that it transmits, at each side.
struct Direction {
  int line;
  ChannelGetter get;
};
constexpr Direction kReceived[] = {{0, QVR_getChannelStatusus}, {1, QVR_getChannelStatusds}};
constexpr Direction kTransmitted[] = {{0, QVR_getChannelStatusds}, {1, QVR_getChannelStatusus}};

class ChannelStatus : public testing::Test {
 protected:
  void SetUp() override {
    enterBothLines();
    startDevice(driver_, 0, LS_SHOWTIME);
    startDevice(driver_, 1, LS_SHOWTIME);
    std::memset(&status_, 0x55, sizeof status_);
  }

  ExpectedRequests driver_{Script()};
  QVR_channelStatus_t status_;
};

TEST_F(ChannelStatus, ReadsTheReceiveDirection) {
  for (const Direction& direction : kReceived) {
    driver_.expect(readsReceived(direction.line));
    EXPECT_EQ(direction.get(direction.line, &status_), QVR_E_STATUS_OK);
    EXPECT_EQ(status_.NDR, 4100000000U);
    EXPECT_EQ(status_.ETR, 110001U);
    EXPECT_EQ(status_.GDR, 110001U);
    EXPECT_EQ(status_.ATTNDR, 130003U);
    EXPECT_EQ(status_.DTU_NFEC, 255);
    EXPECT_EQ(status_.DTU_RFEC, 16);
    EXPECT_EQ(status_.DTU_Q, 4);
    driver_.verify();
  }
}

TEST_F(ChannelStatus, ReadsTheTransmitDirection) {
  for (const Direction& direction : kTransmitted) {
    driver_.expect(readsTransmitted(direction.line));
    EXPECT_EQ(direction.get(direction.line, &status_), QVR_E_STATUS_OK);
    EXPECT_EQ(status_.NDR, 420002U);
    EXPECT_EQ(status_.ETR, 410002U);
    EXPECT_EQ(status_.GDR, 410002U);
    EXPECT_EQ(status_.ATTNDR, kFarEndAttainable);
    EXPECT_EQ(status_.DTU_NFEC, 144);
    EXPECT_EQ(status_.DTU_RFEC, 16);
    EXPECT_EQ(status_.DTU_Q, 16);
    driver_.verify();
  }
}

TEST_F(ChannelStatus, KeepsTheLowBitsOfTheFraming) {
  ETR_DB_S wide = database();
  wide.Rx_nFec = 0x101;
  wide.Rx_kFec = 0x102;
  wide.Rx_Q = 0xFFFFFF07;
  driver_.expect(readsDerived(0, derived()) + readsFramerInit(0) + readsFramer(0, framer()) +
                 readsEtrDatabase(0, wide));
  EXPECT_EQ(QVR_getChannelStatusus(0, &status_), QVR_E_STATUS_OK);
  EXPECT_EQ(status_.DTU_NFEC, 1);
  EXPECT_EQ(status_.DTU_RFEC, 255);
  EXPECT_EQ(status_.DTU_Q, 7);
}

// The read at this position fails and no other read follows. The rates are set if only the framing is
// missing.
void expectFailures(ExpectedRequests& driver, const Direction& direction, const Script& script,
                    size_t position, QVR_retval_t failure) {
  SCOPED_TRACE(position);
  QVR_channelStatus_t status;
  std::memset(&status, 0x55, sizeof status);
  driver.expect(script.failingAt(position, EIO));
  EXPECT_EQ(direction.get(direction.line, &status), failure);
  const bool hasRates = position + 1 == script.size();
  EXPECT_EQ(status.NDR == 0x55555555, !hasRates);
  EXPECT_EQ(status.ETR == 0x55555555, !hasRates);
  EXPECT_EQ(status.GDR == 0x55555555, !hasRates);
  EXPECT_EQ(status.ATTNDR == 0x55555555, !hasRates);
  EXPECT_EQ(status.DTU_NFEC, 0x55);
  EXPECT_EQ(status.DTU_RFEC, 0x55);
  EXPECT_EQ(status.DTU_Q, 0x55);
  driver.verify();
}

TEST_F(ChannelStatus, StopsAtTheFirstFailedRead) {
  for (const Direction& direction : kReceived) {
    const Script script = readsReceived(direction.line);
    for (size_t position = 0; position < script.size(); position++) {
      expectFailures(driver_, direction, script, position, QVR_E_MEMREAD_ERROR);
    }
  }
  for (const Direction& direction : kTransmitted) {
    const Script script = readsTransmitted(direction.line);
    expectFailures(driver_, direction, script, 0, QVR_E_MEMREAD_ERROR);
    expectFailures(driver_, direction, script, 1, QVR_E_FAILED_SENDING_FAR_END_MSG);
    expectFailures(driver_, direction, script, 2, QVR_E_MEMREAD_ERROR);
  }
}

TEST_F(ChannelStatus, ReadsOnlyTheReceiveDirectionOfALineThatIsDown) {
  driver_.expect(readsIdentity(0, chipWithLine(LS_IDLE)));
  ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  driver_.expect(readsReceived(0));
  EXPECT_EQ(QVR_getChannelStatusus(0, &status_), QVR_E_STATUS_OK);
  driver_.expect(readsDerived(0, derived()));
  EXPECT_EQ(QVR_getChannelStatusds(0, &status_), QVR_E_FAILED_SENDING_FAR_END_MSG);
}

TEST_F(ChannelStatus, RefusesLinesWithoutADeviceAndInvalidLines) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_EQ(QVR_getChannelStatusus(1, &status_), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getChannelStatusds(1, &status_), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_ASSERTION(QVR_getChannelStatusus(2, &status_),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

}  // namespace
