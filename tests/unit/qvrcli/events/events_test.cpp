// Given these notifications, these lines are printed.
#include "qvrcli/events/events.h"
#include "chip/boot_register.h"
#include "chip/registers.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "driver/driver.h"
#include "qvrdev/callbacks.h"
#include "qvrlog/qvrlog.h"
#include "std/byte_order.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

template <typename Action>
std::string printedBy(Action action) {
  CaptureStdout();
  action();
  std::fflush(stdout);
  return GetCapturedStdout();
}

TEST(LinkStateChange, IsPrintedWithPaddedStates) {
  EXPECT_EQ(printedBy([] { handleLinkStateChange(0, LS_INIT_TRAIN, LS_SHOWTIME); }),
            "Link [0] state changed from init train      to show time      \n");
}

TEST(LinkStateChange, OfUnknownStatesIsPrinted) {
  EXPECT_EQ(
      printedBy([] { handleLinkStateChange(1, LS_PRE_DEACTIVATING1_E, static_cast<G9701_linkState_t>(15)); }),
      "Link [1] state changed from pre-deactivating 1 to Unknown        \n");
}

TEST(LinkFailure, IsPrintedWithLocalTime) {
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  EXPECT_EQ(printedBy([] { handlelinkFailureNotificationEvent(0, LF_REASON_LOSS_OF_SIGNAL, 1700006400); }),
            "Line failure event on line=0 reason=6 at time 2023-11-15T01:00:00+CET ...\n");
  EXPECT_EQ(
      printedBy([] { handlelinkFailureNotificationEvent(7, LF_REASON_QUELVOR_PROPRIETARY, 1690000000); }),
      "Line failure event on line=7 reason=15 at time 2023-07-22T06:26:40+CEST ...\n");
}

TEST(LinkFailure, InAZoneWithALongNameHasItsTime) {
  const std::string name = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  setenv("TZ", (name + '0').c_str(), 1);
  tzset();
  // A C library may refuse such a name, and the time is then UTC's.
  const std::string zone = tzname[0];
  EXPECT_EQ(printedBy([] { handlelinkFailureNotificationEvent(0, LF_REASON_NO_ERROR, 0); }),
            "Line failure event on line=0 reason=0 at time 1970-01-01T00:00:00+" + zone + " ...\n");
}

TEST(DailyEvent, IsPrintedWithItsTimeStamp) {
  EXPECT_EQ(printedBy([] { handle24hrEvent(1, "2026-01-02T00:00:00", 0); }),
            "24 hour event at 2026-01-02T00:00:00\n");
}

TEST(CommFailure, IsPrintedWithTheDevice) {
  EXPECT_EQ(printedBy([] { handleCommFailureNotificationEvent(1); }), "Communication failure with DFE1\n");
}

TEST(TraceMessage, IsPrintedAsItIs) {
  EXPECT_EQ(printedBy([] { handleTraceLogMessage(QVRLOG_ERR, "[LOG_ERR] 100%s %n no line end"); }),
            "[LOG_ERR] 100%s %n no line end");
}

TEST(NonCdtaCpe, IsPrintedWithTheLine) {
  EXPECT_EQ(printedBy([] { handleNonCdtaCpeJoinNotification(1); }), "non-cDTA CPE joined on line 1\n");
}

TEST(DownloadStatus, IsPrintedWithItsNameAndAnOpenParenthesis) {
  EXPECT_EQ(printedBy([] { handleDownloadStatusNotification(0, QVR_DOWNLOAD_IN_PROGRESS); }),
            "Download Status Notification (line=0, status=DOWNLOAD_IN_PROGRESS\n");
  EXPECT_EQ(printedBy([] { handleDownloadStatusNotification(0, QVR_DOWNLOAD_COMPLETE_AND_VALID); }),
            "Download Status Notification (line=0, status=DOWNLOAD_COMPLETE_AND_VALID\n");
  EXPECT_EQ(printedBy([] { handleDownloadStatusNotification(0, QVR_DOWNLOAD_COMMITTED); }),
            "Download Status Notification (line=0, status=DOWNLOAD_COMMITTED\n");
  EXPECT_EQ(printedBy([] { handleDownloadStatusNotification(0, QVR_DOWNLOAD_FAILED); }),
            "Download Status Notification (line=0, status=DOWNLOAD_FAILED\n");
  EXPECT_EQ(printedBy([] { handleDownloadStatusNotification(0, QVR_DOWNLOAD_NOT_STARTED); }),
            "Download Status Notification (line=0, status=DOWNLOAD_NOT_STARTED\n");
}

TEST(DownloadStatus, ThatStaysTheSameIsPrintedOnce) {
  EXPECT_EQ(printedBy([] {
              handleDownloadStatusNotification(1, QVR_DOWNLOAD_FAILED);
              handleDownloadStatusNotification(1, QVR_DOWNLOAD_FAILED);
            }),
            "Download Status Notification (line=1, status=DOWNLOAD_FAILED\n");
}

TEST(DownloadStatus, StartsAsNotStarted) {
  EXPECT_EQ(printedBy([] { handleDownloadStatusNotification(0, QVR_DOWNLOAD_NOT_STARTED); }), "");
}

TEST(DownloadStatus, IsRememberedForEachLine) {
  EXPECT_EQ(printedBy([] {
              handleDownloadStatusNotification(0, QVR_DOWNLOAD_FAILED);
              handleDownloadStatusNotification(1, QVR_DOWNLOAD_FAILED);
              handleDownloadStatusNotification(0, QVR_DOWNLOAD_FAILED);
            }),
            "Download Status Notification (line=0, status=DOWNLOAD_FAILED\n"
            "Download Status Notification (line=1, status=DOWNLOAD_FAILED\n");
}

TEST(DownloadStatus, OfALineOutOfRangeIsIgnored) {
  EXPECT_EQ(printedBy([] {
              handleDownloadStatusNotification(-1, QVR_DOWNLOAD_FAILED);
              handleDownloadStatusNotification(2, QVR_DOWNLOAD_FAILED);
            }),
            "");
}

TEST(DownloadStatus, OfAnUnknownValueIsPrintedAsUnknown) {
  EXPECT_EQ(printedBy([] { handleDownloadStatusNotification(0, static_cast<QVR_downloadStatus_t>(5)); }),
            "Download Status Notification (line=0, status=DOWNLOAD_UNKNOWN\n");
}

// ---- Chip log lines ----

std::string contentOf(FILE* file) {
  std::string content;
  std::rewind(file);
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
    content += static_cast<char>(c);
  }
  return content;
}

TEST(LogLine, IsPrintedWithItsDeviceAndItsOwnLineEnd) {
  EXPECT_EQ(printedBy([] {
              handleLogMessage(0, "10:00:00 FDU00 - up\n");
              handleLogMessage(1, "%s%n and no end");
            }),
            "DFE00: 10:00:00 FDU00 - up\nDFE01: %s%n and no end");
}

TEST(LogLine, GoesToTheOpenTerminalOnly) {
  FILE* terminal = std::tmpfile();
  ASSERT_NE(terminal, nullptr);
  setTerminal(terminal);
  EXPECT_EQ(printedBy([] { handleLogMessage(1, "up\n"); }), "");
  EXPECT_EQ(contentOf(terminal), "DFE01: up\n");
}

TEST(LogLine, GoesToStandardOutputAgainWhenTheTerminalIsClosed) {
  setTerminal(std::tmpfile());
  setTerminal(nullptr);
  EXPECT_EQ(printedBy([] { handleLogMessage(0, "up\n"); }), "DFE00: up\n");
}

TEST(LogLine, IsWrittenWhileTheTerminalIsReplaced) {
  setTerminal(std::tmpfile());
  std::thread chips([] {
    for (int i = 0; i < 2000; i++) {
      handleLogMessage(0, "up\n");
    }
  });
  for (int i = 0; i < 200; i++) {
    setTerminal(std::tmpfile());
  }
  chips.join();
  setTerminal(nullptr);
}

// ---- Reboots ----

// A chip whose boot register holds the state of the system, and which records what is written to it.
class RebootedChip final : public Driver {
 public:
  explicit RebootedChip(uint32_t sbr) : otherSbr(sbr), sbr_(sbr) {}

  int open(int device) override { return device + 10; }
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD && answers) {
      gfast_memread& read = request.req_u.memread;
      std::fill_n(read.buf, read.bufsize, '\0');
      if (read.hw_mem_addr == SBR_REG_ADDRESS) {
        store_le32(read.buf, descriptor == 10 ? sbr_ : otherSbr);
      }
      return 0;
    }
    if (code == DFEIOCMEMWR) {
      const gfast_memwrite& write = request.req_u.memwrite;
      writes.push_back(std::to_string(descriptor) +
                       (write.hw_mem_addr == VIRT_ADDR_LINKS_PROVISION(0) ? " provision " : " ") +
                       std::to_string(load_le32(write.buf)));
      return 0;
    }
    return -1;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  bool answers = true;
  std::vector<std::string> writes;
  uint32_t otherSbr;  // device 1's

 private:
  uint32_t sbr_;
};

RebootedChip& rebooted(uint32_t sbr) {
  static std::vector<const Driver*>& kept = *new std::vector<const Driver*>;
  auto* chip = new RebootedChip(sbr);
  kept = {&driver(), chip};
  installDriver(*chip);
  return *chip;
}

constexpr uint32_t kLineState = FW_APP << SBR_FW_STATE_OFFSET;
constexpr uint32_t kConfigurationState = kLineState | 1U << SBR_USER_ACTIVATION_STATE_OFFSET;

TEST(Reboot, InLineStateActivatesBothLines) {
  RebootedChip& chip = rebooted(kLineState);
  ASSERT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
  chip.writes.clear();
  EXPECT_EQ(printedBy([] { handleRebootEvent(); }), "Reboot notification...\n");
  EXPECT_THAT(chip.writes, testing::ElementsAre("10 provision 1", "11 provision 1"));
}

TEST(Reboot, InConfigurationStateActivatesNothing) {
  const RebootedChip& chip = rebooted(kConfigurationState);
  EXPECT_EQ(printedBy([] { handleRebootEvent(); }), "Reboot notification...\n");
  EXPECT_THAT(chip.writes, testing::IsEmpty());
}

TEST(Reboot, FollowsTheStateOfDevice0) {
  RebootedChip& chip = rebooted(kConfigurationState);
  chip.otherSbr = kLineState;
  printedBy([] { handleRebootEvent(); });
  EXPECT_THAT(chip.writes, testing::IsEmpty());
}

TEST(Reboot, OfADeviceThatDoesNotAnswerActivatesNothing) {
  RebootedChip& chip = rebooted(kLineState);
  chip.answers = false;
  EXPECT_EQ(printedBy([] { handleRebootEvent(); }), "Reboot notification...\n");
  EXPECT_THAT(chip.writes, testing::IsEmpty());
}

TEST(Reboot, IsCounted) {
  rebooted(kConfigurationState);
  EXPECT_EQ(rebootCount(), 0);
  printedBy([] {
    handleRebootEvent();
    handleRebootEvent();
  });
  EXPECT_EQ(rebootCount(), 2);
}

// ---- Registration ----

TEST(RegisteredHandlers, PrintEventsOfTheLibrary) {
  rebooted(kConfigurationState);
  ASSERT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
  registerEventHandlers();
  const auto& library = callbacks();
  EXPECT_EQ(printedBy([&] { library.deviceLinkStateChangeCB.notify(1, LS_IDLE, LS_SILENT); }),
            "Link [1] state changed from idle            to silent         \n");
  EXPECT_EQ(printedBy([&] { library.rebootCB.notify(); }), "Reboot notification...\n");
  EXPECT_THAT(printedBy([&] { library.linkFailureCB.notify(0, LF_REASON_HIGH_BER, time_t{0}); }),
              testing::StartsWith("Line failure event on line=0 reason=8 at time 1970-01-01T"));
  EXPECT_EQ(printedBy([&] { library.commFailureCB.notify(0); }), "Communication failure with DFE0\n");
  EXPECT_EQ(printedBy([&] { library.nonCdtaCpeJoinNotificationCB.notify(0); }),
            "non-cDTA CPE joined on line 0\n");
}

// A message that goes to a handler is cut to the size of the trace log's buffer.
TEST(RegisteredHandlers, PrintTraceMessages) {
  registerEventHandlers();
  const std::string text(400, 'x');
  EXPECT_EQ(printedBy([&] { QVR_traceLogMessage(QVRLOG_ERR, "f", 1, "%s", text.c_str()); }).size(),
            QVR_K_MAX_LOG_MESSAGE - 1);
}

// Chip log lines are delivered only after `start logging`.
TEST(RegisteredHandlers, LeaveChipLogsToTheLoggingCommand) {
  registerEventHandlers();
  EXPECT_EQ(callbacks().logMessageCB.load(), nullptr);
}

}  // namespace
