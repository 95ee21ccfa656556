// The command thread and the notification thread at the device table at the same time.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <thread>
#include <utility>

#include "chip/boot_register.h"
#include "driver/driver.h"
#include "qvrdev/device_table.h"
#include "support/test_clock.h"

using namespace gfast;

namespace {

// Answers every request at once, every chip byte alike.
class AnsweringDriver final : public Driver {
 public:
  int open(int device) override {
    if (onNextOpen) {
      std::exchange(onNextOpen, nullptr)();
      return -1;
    }
    open_++;
    return device;
  }
  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD) {
      std::memset(request.req_u.memread.buf, 0x66, request.req_u.memread.bufsize);
    }
    return 0;
  }
  void close(int /*descriptor*/) override { open_--; }
  void rediscover() override { onRediscovery(); }

  int openDescriptors() const { return open_; }

  std::function<void()> onNextOpen;  // the next open does this and fails
  std::function<void()> onRediscovery = [] {};

 private:
  std::atomic<int> open_{0};
};

TEST(DeviceTableThreads, ReadersSeeWholeRecordsWhileDevicesComeAndGo) {
  testClock();
  static AnsweringDriver chips;
  installDriver(chips);
  std::atomic<bool> stop{false};
  std::thread notifications([&] {
    while (!stop) {
      for (QVR_deviceId_t device = 0; device < QVR_K_MAX_DEVICES; device++) {
        uint8_t sbr[4];
        QVR_readmem(device, SBR_REG_ADDRESS, sbr, sizeof sbr);
        QVR_getDeviceInfo(device, nullptr);
        setLineState(device, 0, LS_INIT_TRAIN);
        const QVR_deviceInfo_t record = deviceRecord(device);
        EXPECT_TRUE(record.temperatureInCelcius == 0 || record.temperatureInCelcius == 0x66666666U);
        EXPECT_TRUE(record.lineState[0] == LS_SELFTEST || record.lineState[0] == LS_INIT_TRAIN ||
                    record.lineState[0] == LS_SHOWTIME);
      }
    }
  });
  for (int i = 0; i < 500; i++) {
    QVR_rediscoverDevices();
    EXPECT_EQ(QVR_numberOfDevices(), 2U);
  }
  stop = true;
  notifications.join();
  EXPECT_EQ(chips.openDescriptors(), 2);
}

// A chip that boots while the driver searches is read by the notification thread.
TEST(DeviceTableThreads, DeviceThatIsReadDuringRediscoveryIsCounted) {
  testClock();
  static AnsweringDriver chips;
  installDriver(chips);
  chips.onRediscovery = [] {
    std::thread([] { EXPECT_EQ(QVR_getDeviceInfo(1, nullptr), QVR_E_STATUS_OK); }).join();
  };
  QVR_rediscoverDevices();
  EXPECT_EQ(QVR_numberOfDevices(), 2U);
  EXPECT_EQ(QVR_isDeviceActive(1), TRUE);
}

TEST(DeviceTableThreads, FailedOpenDoesNotMakeADeviceInactiveThatAnotherThreadHasRead) {
  testClock();
  static AnsweringDriver chips;
  installDriver(chips);
  chips.onNextOpen = [] {
    std::thread([] { EXPECT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK); }).join();
  };
  EXPECT_EQ(QVR_deviceHandle(0), -1);
  EXPECT_EQ(QVR_isDeviceActive(0), TRUE);
  EXPECT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_numberOfDevices(), 1U);
}

}  // namespace
