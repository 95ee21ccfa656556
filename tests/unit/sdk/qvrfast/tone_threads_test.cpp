// Subcarrier tables read by one thread while another takes the line's framing as it reaches showtime again
// and again.

#include <gfast_api.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "driver/driver.h"
#include "qvrline/line_module.h"
#include "support/lines.h"
#include "support/tones.h"

using namespace gfast;

namespace {

// A line in showtime on each device, whose framing differs at every read. Guard words agree, and far ends
// answer every request.
class RestlessChips final : public Driver {
 public:
  RestlessChips() {
    enterBothLines();
    installDriver(*this);
    for (QVR_deviceId_t device = 0; device < QVR_K_MAX_DEVICES; device++) {
      EXPECT_EQ(QVR_getDeviceInfo(device, nullptr), QVR_E_STATUS_OK);
    }
  }

  int open(int device) override { return device; }
  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCFARENDMSG) {
      answer(request.req_u.farendmsg);
    } else {
      fill(request.req_u.memread);
    }
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

 private:
  static void answer(gfast_farendmsg& message) {
    if (message.farend_msg_req_type == MGMT_FAR_END_REQ_TYPE_READMEM) {
      message.buf[1] = '\x80';
    }
    message.datalen_copied_to_user = message.bufsize;
  }

  void fill(gfast_memread& record) {
    std::memset(record.buf, 1, record.bufsize);
    switch (record.hw_mem_addr) {
      case SBR_REG_ADDRESS:
        store_le32(record.buf, 0x01800000);
        break;
      case VIRT_ADDR_DEVICE_INFO_READ:
        std::memset(record.buf, 0, record.bufsize);
        break;
      case VIRT_ADDR_B0_REGS:
        store_le32(record.buf + B0_REGS_LINK_STATES, LS_SHOWTIME);
        break;
      case 0xE2400000:
        copy(framing(reading_ % 3000, reading_ % 5000), record);
        reading_ += 617;
        break;
      case kSentSet:
      case kReceivedSet:
        copy(medleySet({{43, 1971}}), record);
        break;
      default:
        break;
    }
  }

  static void copy(const Bytes& bytes, gfast_memread& record) {
    std::copy(bytes.begin(), bytes.end(), record.buf);
  }

  std::atomic<uint32_t> reading_{0};
};

TEST(ToneThreads, ReadTablesWhileTheFramingChanges) {
  const RestlessChips chips;
  std::atomic<bool> done{false};
  std::thread notifications([&] {
    while (!done) {
      QVR_linkStateChangeEventHandler(0, LS_INIT_TRAIN, LS_SHOWTIME);
      QVR_linkStateChangeEventHandler(1, LS_INIT_TRAIN, LS_SHOWTIME);
    }
  });
  QVR_linePhyParams_t params{};
  uint8_t bytes[QVR_MAX_NUMBER_OF_TONES];
  G9972_HLOGps_t hlog;
  for (int round = 0; round < 20; round++) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      EXPECT_EQ(QVR_getLinePhyParams(line, &params), QVR_E_STATUS_OK);
      EXPECT_EQ(QVR_getLineStatusBITSpsds(line, bytes), QVR_E_STATUS_OK);
      EXPECT_EQ(QVR_getLineStatusSNRpsus(line, bytes), QVR_E_STATUS_OK);
      EXPECT_EQ(QVR_getLineStatusALNpsds(line, bytes), QVR_E_STATUS_OK);
      EXPECT_EQ(QVR_getLineStatusHLOGpsus(line, hlog), QVR_E_STATUS_OK);
    }
  }
  done = true;
  notifications.join();
}

}  // namespace
