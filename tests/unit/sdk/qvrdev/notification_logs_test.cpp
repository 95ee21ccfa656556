// Given these log buffers from a chip, these lines are delivered.
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "chip/log_records.h"
#include "qvrdev/callbacks.h"
#include "qvrdev/device_table.h"
#include "qvrdev/log_records.h"
#include "support/local_time.h"
#include "unit/sdk/qvrdev/notification_chips.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// One log record: header, text, parameters, and padding when the text is odd.
Record logRecord(uint8_t coreId, uint8_t coreType, std::string_view text,
                 std::initializer_list<uint32_t> params = {}) {
  Record record = {coreId, coreType, static_cast<uint8_t>(params.size()), static_cast<uint8_t>(text.size())};
  std::ranges::copy(text, std::back_inserter(record));
  std::ranges::copy(words(params), std::back_inserter(record));
  if (text.size() % 2 != 0) {
    record.push_back(0);
  }
  return record;
}

// Text as the framer and the control processor store it.
std::string wide(std::string_view text) {
  std::string stored;
  for (const char c : text) {
    stored += c;
    stored += '\0';
  }
  return stored;
}

Record joined(std::initializer_list<Record> records) {
  Record all;
  for (const Record& record : records) {
    std::ranges::copy(record, std::back_inserter(all));
  }
  return all;
}

class Logs : public testing::Test {
 protected:
  Logs() {
    setZone("UTC0");
    bench_.clock.time = at(1, 1, 1);
    bench_.start(0, 10);
    bench_.start(1, 11);
    QVR_registerLogMessageCB(0, listen);
  }

  static void listen(QVR_deviceId_t device, const char* text) {
    told().push_back(std::to_string(device) + ' ' + text);
  }

  Chip& chip(int device) { return bench_.chips.chip(device); }

  void handle(int device, std::initializer_list<Record> buffers) {
    chip(device).logs.assign(buffers);
    EXPECT_EQ(QVR_handleLogEvents(chip(device).descriptor, device), QVR_E_STATUS_OK);
  }

  // A completed log request with exactly these bytes, so a sanitizer sees every byte read beyond them.
  static void deliver(const Record& bytes, uint32_t claimed) {
    gfast_iocreq request{};
    Record exact = bytes;
    exact.shrink_to_fit();
    request.req_u.logalm_read.buf = reinterpret_cast<char*>(exact.data());
    request.req_u.logalm_read.bufsize = static_cast<uint32_t>(exact.size());
    request.req_u.logalm_read.datalen_copied_to_user = claimed;
    QVR_sendLogMessage(0, request);
  }
  static void deliver(const Record& bytes) { deliver(bytes, static_cast<uint32_t>(bytes.size())); }

  Bench bench_;
};

TEST_F(Logs, FduRecordShowsTimeCoreAndLine) {
  handle(0, {logRecord(0, FDU_CORE, "link %d is up\n", {3})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - link 3 is up\n"));
}

TEST_F(Logs, FramerRecordHasTwoBytesACharacter) {
  handle(0, {logRecord(0, FRAMER_CORE, {"a\0b\0", 4})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FRM00 - ab"));
}

TEST_F(Logs, ControlProcessorRecordShowsNoLine) {
  handle(1, {logRecord(0, CP_CORE, wide("boot %u\n"), {9})});
  EXPECT_THAT(told(), ElementsAre("1 01:01:01 CP - boot 9\n"));
}

TEST_F(Logs, RecordOfAnUnknownCoreHasNoTag) {
  handle(0, {joined({logRecord(0, INVALID_CORE_TYPE, "ab"), logRecord(0, 255, "cd")})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01    00 - ab", "0 01:01:01    00 - cd"));
}

TEST_F(Logs, RecordShowsTheInternalLineOfItsDevice) {
  handle(1, {logRecord(0, FDU_CORE, "up")});
  EXPECT_THAT(told(), ElementsAre("1 01:01:01 FDU01 - up"));
}

TEST_F(Logs, RecordOfACoreWithoutALineShowsTheCore) {
  handle(0, {joined({logRecord(1, FDU_CORE, "up"), logRecord(255, FRAMER_CORE, wide("up"))})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU01 - up", "0 01:01:01 FRM255 - up"));
}

TEST_F(Logs, RecordsOfOneBufferAreDeliveredInOrder) {
  handle(0, {joined({logRecord(0, FDU_CORE, "one %d", {1}), logRecord(0, CP_CORE, wide("two %d"), {2}),
                     logRecord(0, FDU_CORE, "three")})});
  EXPECT_THAT(told(),
              ElementsAre("0 01:01:01 FDU00 - one 1", "0 01:01:01 CP - two 2", "0 01:01:01 FDU00 - three"));
}

TEST_F(Logs, BuffersAreDeliveredUntilNoneIsPending) {
  handle(0, {logRecord(0, FDU_CORE, "one"), logRecord(0, FDU_CORE, "two")});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - one", "0 01:01:01 FDU00 - two"));
  EXPECT_EQ(chip(0).logReads, 3);
}

TEST_F(Logs, TextOfOddLengthIsPadded) {
  handle(0, {joined({logRecord(0, FDU_CORE, "abc%x", {0x11223344}), logRecord(0, FDU_CORE, "next")})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - abc11223344", "0 01:01:01 FDU00 - next"));
}

TEST_F(Logs, TwoByteTextOfOddLengthKeepsItsLastCharacter) {
  handle(0, {joined({logRecord(0, CP_CORE, {"a\0b\0c", 5}), logRecord(0, FRAMER_CORE, {"d", 1}, {5})})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 CP - abc", "0 01:01:01 FRM00 - d"));
}

// Beyond its own words a record reads the bytes of the record behind it.
TEST_F(Logs, TwelveWordsAreReadWhateverTheRecordDeclares) {
  handle(0, {joined({logRecord(0, FDU_CORE, "%x.%08x!", {0xA}), logRecord(3, FDU_CORE, "ab", {})})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - a.02000003!", "0 01:01:01 FDU03 - ab"));
}

TEST_F(Logs, WordsThatWereNotCopiedAreZero) {
  deliver(logRecord(0, FDU_CORE, "%x %x %x!", {1, 2}));
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - 1 2 0!"));
}

TEST_F(Logs, RecordWithoutTextAndParametersIsEmpty) {
  deliver({0, FDU_CORE, 0, 0});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - "));
}

TEST_F(Logs, RecordMayDeclareMoreParametersThanAreRead) {
  handle(0, {joined({logRecord(0, FDU_CORE, "%d", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}),
                     logRecord(0, FDU_CORE, "next")})});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - 1", "0 01:01:01 FDU00 - next"));
}

TEST_F(Logs, CutHeaderEndsTheBuffer) {
  for (const size_t rest : {1U, 2U, 3U}) {
    told().clear();
    deliver(joined({logRecord(0, FDU_CORE, "whole"), Record(rest, 0)}));
    EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - whole"));
  }
}

TEST_F(Logs, CutTextEndsTheBuffer) {
  Record bytes = joined({logRecord(0, FDU_CORE, "whole"), logRecord(0, FDU_CORE, "lost")});
  bytes.pop_back();
  deliver(bytes);
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - whole"));
}

TEST_F(Logs, CutParametersAreZero) {
  Record bytes = joined({logRecord(0, FDU_CORE, "whole"), logRecord(0, FDU_CORE, "%u of %u", {7, 8})});
  bytes.pop_back();
  deliver(bytes);
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - whole", "0 01:01:01 FDU00 - 7 of 0"));
}

TEST_F(Logs, LastRecordMayLackItsPadding) {
  Record bytes = logRecord(0, FDU_CORE, "odd");
  bytes.pop_back();
  deliver(bytes);
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - odd"));
}

TEST_F(Logs, LargestLengthsEndTheBuffer) {
  deliver(Record(64, 0xFF));
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(Logs, CopiedLengthBeyondTheBufferIsCutToIt) {
  deliver(logRecord(0, FDU_CORE, "whole", {1}), 0xFFFFFFFF);
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - whole"));
  chip(0).claimed = 0xFFFFFFFF;
  told().clear();
  Record full = logRecord(0, FDU_CORE, "first");
  full.resize(QVR_K_MAX_EVT_BUFFER_LEN, 0xFF);
  handle(0, {full});
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - first", testing::StartsWith("0 01:01:01    255 - ")));
}

TEST_F(Logs, CopiedLengthBelowTheBufferEndsTheRecords) {
  const Record first = logRecord(0, FDU_CORE, "first");
  deliver(joined({first, logRecord(0, FDU_CORE, "second")}), static_cast<uint32_t>(first.size()));
  EXPECT_THAT(told(), ElementsAre("0 01:01:01 FDU00 - first"));
}

TEST_F(Logs, LongTextIsCutToALogLine) {
  std::string format;
  while (format.size() < 200) {
    format += "%99999d";
  }
  handle(0, {logRecord(0, FDU_CORE, format + "\n")});
  ASSERT_EQ(told().size(), 1U);
  EXPECT_EQ(told()[0].size(), 2 + QVR_K_MAX_LOG_STRING_LEN - 1);
  EXPECT_THAT(told()[0], testing::EndsWith("\n"));
}

TEST_F(Logs, AnyBytesAreReadWithinWhatWasCopied) {
  uint32_t random = 99;
  for (int round = 0; round < 5000; round++) {
    Record bytes(static_cast<size_t>(1 + round % 257));
    for (uint8_t& byte : bytes) {
      random = random * 1664525U + 1013904223U;
      const uint32_t value = random >> 24;
      byte = static_cast<uint8_t>(value > 200 ? '%' : value > 100 ? value % 8 : value);
    }
    deliver(bytes);
  }
  for (const std::string& line : told()) {
    ASSERT_LT(line.size(), 2 + QVR_K_MAX_LOG_STRING_LEN);
  }
}

TEST_F(Logs, RecordsAreDroppedWithoutACallback) {
  QVR_registerLogMessageCB(0, nullptr);
  handle(0, {logRecord(0, FDU_CORE, "one")});
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(Logs, DeliveryStopsWhenTheCallbackIsRemoved) {
  QVR_registerLogMessageCB(0, nullptr);
  QVR_registerLogMessageCB(0, [](QVR_deviceId_t, const char* text) {
    told().emplace_back(text);
    QVR_registerLogMessageCB(0, nullptr);
  });
  handle(0, {joined({logRecord(0, FDU_CORE, "one"), logRecord(0, FDU_CORE, "two")})});
  EXPECT_THAT(told(), ElementsAre("01:01:01 FDU00 - one"));
}

TEST_F(Logs, DrainingEndsWhenARequestFails) {
  int taken = -1;
  EXPECT_EQ(QVR_handleLogEvents(99, 0, &taken), QVR_E_STATUS_OK);
  EXPECT_EQ(taken, 0);
}

TEST_F(Logs, FloodIsLeftForTheNextCall) {
  chip(0).logs.assign(kMostLogBuffersInOneGo + 1, logRecord(0, FDU_CORE, "again"));
  int taken = 0;
  QVR_handleLogEvents(10, 0, &taken);
  EXPECT_EQ(taken, kMostLogBuffersInOneGo);
  EXPECT_EQ(chip(0).logs.size(), 1U);
}

// The time of a record is local time.
TEST_F(Logs, RecordShowsLocalTime) {
  setZone("<+0545>-5:45");
  handle(0, {logRecord(0, FDU_CORE, "up")});
  EXPECT_THAT(told(), ElementsAre("0 06:46:01 FDU00 - up"));
}

}  // namespace
