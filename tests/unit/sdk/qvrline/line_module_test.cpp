// The start of the line module, and its reaction to events of the chips.
#include <gmock/gmock.h>

#include "chip/device_information.h"
#include "qvrdev/callbacks.h"
#include "qvrdev/device_events.h"
#include "qvrline/line_module.h"
#include "qvrline/line_table.h"
#include "support/chip_identity.h"
#include "support/dictionaries.h"
#include "support/expected_requests.h"
#include "support/records.h"
#include "support/test_clock.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kFramerInit = 0xE2400000;
constexpr uint32_t kPerformanceMonitoring = 0xF0000000;

Script readsFraming(int device, uint32_t first) {
  return reads(device, kFramerInit, countingWords(72, first));
}

Script readsCounters(int device, uint32_t first) {
  return reads(device, kPerformanceMonitoring, countingWords(156, first));
}

// Both snapshots of the line's counters are this block.
void expectCountersAre(QVR_lineId_t line, uint32_t first) {
  const QVR_intervalCounterDB_t counters = QVR_lineDescriptorForLine(line).counters;
  expectCountingWords(counters.curr15minSnapshot, first);
  expectCountingWords(counters.prev15minSnapshot, first);
}

ChipIdentity networkSide() {
  ChipIdentity chip;
  chip.setWord(DEV_INF_FIRMWARE_VERSION, 0x01000000);  // chipset 1
  return chip;
}

class LineModule : public testing::Test {
 protected:
  LineModule() { testClock(); }

  // The devices answer, or do not, when the device layer starts.
  void startDevices(const Script& second) {
    driver_.expect(opens(0) + readsIdentity(0, networkSide()).times(2) + second);
  }
  void startBothDevices() { startDevices(opens(1) + readsIdentity(1, {})); }

  // The lines are in the table, with counters that they started from.
  void startBothLines() {
    startBothDevices();
    driver_.expect(readsFraming(0, 100) + readsCounters(0, 1000) + readsFraming(1, 200) +
                   readsCounters(1, 2000));
    ASSERT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
    driver_.verify();
  }

  ExpectedRequests driver_{Script()};
};

TEST_F(LineModule, BuildsTheTableFromTheDevicesThatAnswer) {
  startBothLines();
  EXPECT_EQ(numberOfLines(), 2U);
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    const QVR_lineDescriptor_t descriptor = QVR_lineDescriptorForLine(line);
    EXPECT_EQ(descriptor.deviceId, line);
    EXPECT_EQ(descriptor.narrowLineID, 0U);
    EXPECT_EQ(descriptor.broadLineID, static_cast<uint32_t>(line));
    EXPECT_EQ(descriptor.isDPsideLink, line == 0 ? TRUE : FALSE);
    EXPECT_EQ(QVR_int2log(line), line);
  }
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 102U);
  EXPECT_EQ(QVR_lineDescriptorForLine(0).rxLogicalFrameNumSym, 114U);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).phyParams.numProcessedTones, 203U);
  expectCountersAre(0, 1000);
  expectCountersAre(1, 2000);
}

TEST_F(LineModule, MakesNoRequestWhenStartedAgain) {
  startBothLines();
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_initLineModule(TRUE), QVR_E_STATUS_OK);
  EXPECT_EQ(numberOfLines(), 2U);
}

TEST_F(LineModule, LeavesTheLineOfAMissingDevice1Zero) {
  startDevices(opens(1).fails(ENOENT));
  driver_.expect(readsFraming(0, 100) + readsCounters(0, 1000));
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(numberOfLines(), 1U);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).broadLineID, 0U);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).phyParams.firstTone, 0U);
  EXPECT_EQ(QVR_int2log(1), 1);
}

TEST_F(LineModule, KeepsTheLineNumberOfDevice1WithoutDevice0) {
  startBothDevices();
  ASSERT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  driver_.expect(closes(0) + closes(1) + rediscovers() + opens(0).fails(ENOENT) + opens(1) +
                 readsIdentity(1, networkSide()));
  QVR_rediscoverDevices();
  driver_.expect(readsFraming(1, 200) + readsCounters(1, 2000));
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(numberOfLines(), 1U);
  const QVR_lineDescriptor_t line0 = QVR_lineDescriptorForLine(0);
  EXPECT_EQ(line0.isDPsideLink, FALSE);
  EXPECT_EQ(line0.phyParams.numProcessedTones, 0U);
  EXPECT_TRUE(isZero(line0.counters));
  const QVR_lineDescriptor_t line1 = QVR_lineDescriptorForLine(1);
  EXPECT_EQ(line1.deviceId, 1);
  EXPECT_EQ(line1.narrowLineID, 0U);
  EXPECT_EQ(line1.broadLineID, 1U);
  EXPECT_EQ(line1.isDPsideLink, TRUE);
  EXPECT_EQ(line1.phyParams.firstTone, 202U);
}

TEST_F(LineModule, FailsWithoutDevices) {
  driver_.expect(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_ERROR);
  EXPECT_EQ(numberOfLines(), 0U);
  startBothLines();
}

TEST_F(LineModule, WaitsForDevice0WhenAsked) {
  driver_.expect(opens(0).fails(ENOENT).times(2));
  startBothDevices();
  driver_.expect(readsFraming(0, 0).fails(EIO) + readsFraming(1, 0).fails(EIO));
  EXPECT_EQ(QVR_initLineModule(TRUE), QVR_E_STATUS_OK);
  EXPECT_EQ(testClock().sleeps().size(), 2U);
}

TEST_F(LineModule, EntersALineWhoseFramingCannotBeRead) {
  startBothDevices();
  driver_.expect(readsFraming(0, 100).fails(EIO) + readsFraming(1, 200) + readsCounters(1, 2000));
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(numberOfLines(), 2U);
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(0);
  EXPECT_EQ(line.isDPsideLink, TRUE);
  EXPECT_EQ(line.phyParams.firstTone, 0U);
  EXPECT_TRUE(isZero(line.counters));
  expectCountersAre(1, 2000);
}

TEST_F(LineModule, StartsFromZeroWhenTheCountersCannotBeRead) {
  startBothDevices();
  driver_.expect(readsFraming(0, 100) + readsCounters(0, 1000).fails(EIO) + readsFraming(1, 200) +
                 readsCounters(1, 2000));
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 102U);
  EXPECT_TRUE(isZero(QVR_lineDescriptorForLine(0).counters));
}

TEST_F(LineModule, FailsWithoutAFreeQuarterHourSlot) {
  const auto ignore = [](time_t) {};
  ASSERT_EQ(QVR_register15minCounterEventCB(-1, ignore), 0);
  ASSERT_EQ(QVR_register15minCounterEventCB(-1, ignore), 1);
  startBothDevices();
  const Script refreshes =
      readsFraming(0, 100) + readsCounters(0, 1000) + readsFraming(1, 200) + readsCounters(1, 2000);
  driver_.expect(refreshes);
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_FAILED_REGISTERING_CALLBACK);
  driver_.verify();

  // The module has not started, so the next start tries everything again.
  QVR_register15minCounterEventCB(1, nullptr);
  driver_.expect(refreshes);
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(numberOfLines(), 2U);
  EXPECT_EQ(QVR_register15minCounterEventCB(-1, ignore), -1);
}

// One call of the observer, and the line's framing at that moment.
struct Transition {
  QVR_lineId_t line;
  G9701_linkState_t before;
  G9701_linkState_t after;
  uint32_t firstTone;
  bool operator==(const Transition&) const = default;
};

std::vector<Transition>& observed() {
  static auto& transitions = *new std::vector<Transition>;
  return transitions;
}

void observe(QVR_lineId_t line, G9701_linkState_t before, G9701_linkState_t after) {
  observed().push_back({line, before, after, QVR_lineDescriptorForLine(line).phyParams.firstTone});
}

Bytes linkStatusEvent(uint32_t before, uint32_t after) {
  Bytes event(20);
  store_le32(&event[GFAST_EVENT_TYPE], EVENT_TYPE_LINKS_STATUS_CHANGED);
  store_le32(&event[GFAST_EVENT_PARAMS], before);
  store_le32(&event[GFAST_EVENT_PARAMS + 4], after);
  return event;
}

// The notification thread stands still under the test clock; this is what it would do.
void drainEvents(int device) {
  QVR_handleAlarm(ExpectedRequests::descriptorOf(device), device);
}

TEST_F(LineModule, ShowtimeCallsTheObserverThenReadsTheFraming) {
  startBothLines();
  QVR_registerlinkStateChangeCB(observe, LS_SHOWTIME);
  driver_.expect(readsEvent(1, linkStatusEvent(LS_INIT_TRAIN, LS_SHOWTIME)) + readsFraming(1, 500) +
                 readsEvent(1, {}));
  drainEvents(1);
  EXPECT_THAT(observed(), ElementsAre(Transition{1, LS_INIT_TRAIN, LS_SHOWTIME, 202}));
  EXPECT_EQ(QVR_lineDescriptorForLine(1).phyParams.firstTone, 502U);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).rxLogicalFrameNumSym, 514U);
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 102U);
  expectCountersAre(1, 2000);
}

TEST_F(LineModule, LeavingShowtimeOnlyCallsTheObserver) {
  startBothLines();
  QVR_registerlinkStateChangeCB(observe, LS_SHOWTIME);
  driver_.expect(readsEvent(0, linkStatusEvent(LS_SHOWTIME, LS_IDLE)) + readsEvent(0, {}));
  drainEvents(0);
  EXPECT_THAT(observed(), ElementsAre(Transition{0, LS_SHOWTIME, LS_IDLE, 102}));
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 102U);
}

TEST_F(LineModule, ObserverSeesEveryTransitionWhateverItsMask) {
  startBothLines();
  QVR_registerlinkStateChangeCB(observe, LS_IDLE);
  for (uint32_t state = LS_SELFTEST; state < LS_SHOWTIME; state++) {
    QVR_linkStateChangeEventHandler(0, static_cast<G9701_linkState_t>(state),
                                    static_cast<G9701_linkState_t>((state + 1) % LS_SHOWTIME));
  }
  EXPECT_EQ(observed().size(), 6U);
}

TEST_F(LineModule, KeepsTheFramingWhenTheNewOneCannotBeRead) {
  startBothLines();
  driver_.expect(readsFraming(0, 500).fails(EIO));
  QVR_linkStateChangeEventHandler(0, LS_INIT_TRAIN, LS_SHOWTIME);
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 102U);
}

TEST_F(LineModule, ReadsTheFramingWithoutAnObserver) {
  startBothLines();
  QVR_registerlinkStateChangeCB(observe, LS_SHOWTIME);
  QVR_registerlinkStateChangeCB(nullptr, LS_SHOWTIME);
  driver_.expect(readsFraming(0, 500));
  QVR_linkStateChangeEventHandler(0, LS_INIT_TRAIN, LS_SHOWTIME);
  EXPECT_THAT(observed(), IsEmpty());
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 502U);
}

TEST_F(LineModule, LaterObserverReplacesTheEarlierOne) {
  startBothLines();
  QVR_registerlinkStateChangeCB([](QVR_lineId_t, G9701_linkState_t, G9701_linkState_t) { FAIL(); },
                                LS_SHOWTIME);
  QVR_registerlinkStateChangeCB(observe, LS_SHOWTIME);
  QVR_linkStateChangeEventHandler(1, LS_IDLE, LS_SILENT);
  EXPECT_THAT(observed(), ElementsAre(Transition{1, LS_IDLE, LS_SILENT, 202}));
}

TEST_F(LineModule, RebootReadsFramingAndCountersBeforeTheCallback) {
  startBothLines();
  QVR_registerRebootEventCB([] { observe(0, LS_SELFTEST, LS_SELFTEST); });
  driver_.expect(readsFraming(0, 500) + readsCounters(0, 5000) + readsFraming(1, 600) +
                 readsCounters(1, 6000));
  QVR_handleRebootEvent();
  EXPECT_THAT(observed(), ElementsAre(Transition{0, LS_SELFTEST, LS_SELFTEST, 502}));
  EXPECT_EQ(QVR_lineDescriptorForLine(1).phyParams.firstTone, 602U);
  expectCountersAre(0, 5000);
  expectCountersAre(1, 6000);
}

TEST_F(LineModule, RebootKeepsALineWhoseFramingCannotBeRead) {
  startBothLines();
  driver_.expect(readsFraming(0, 500).fails(EIO) + readsFraming(1, 600) + readsCounters(1, 0).fails(EIO));
  QVR_rebootNotificationHandler();
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 102U);
  expectCountersAre(0, 1000);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).phyParams.firstTone, 602U);
  EXPECT_TRUE(isZero(QVR_lineDescriptorForLine(1).counters));
}

// Line 0 reaches showtime, with another framing, just after its framing was first read.
class TrainsDuringStart final : public Driver {
 public:
  int open(int device) override { return device; }
  int request(int descriptor, uint32_t /*code*/, gfast_iocreq& request) override {
    const gfast_memread& read = request.req_u.memread;
    if (descriptor == 0 && read.hw_mem_addr == kPerformanceMonitoring) {
      framing_ = 900;
      callbacks().deviceLinkStateChangeCB.notify(0, LS_INIT_TRAIN, LS_SHOWTIME);
    }
    const Bytes bytes = countingWords(read.bufsize, read.hw_mem_addr == kFramerInit ? framing_ : 0);
    std::copy(bytes.begin(), bytes.end(), read.buf);
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

 private:
  uint32_t framing_ = 100;
};

TEST(LineModuleStart, ReadsTheFramingOfALineThatReachesShowtimeMeanwhile) {
  testClock();
  static TrainsDuringStart chips;
  installDriver(chips);
  QVR_registerlinkStateChangeCB(observe, LS_SHOWTIME);
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_THAT(observed(), ElementsAre(Transition{0, LS_INIT_TRAIN, LS_SHOWTIME, 102}));
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 902U);
}

}  // namespace
