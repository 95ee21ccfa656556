#include "qvrdev/log_records.h"

#include <fmt/printf.h>

#include <algorithm>
#include <span>
#include <string>

#include "chip/log_records.h"
#include "clock/clock.h"
#include "driver/driver.h"
#include "driver/envelope.h"
#include "qvrdev/callbacks.h"
#include "qvrdev/device_lines.h"
#include "qvrdev/device_table.h"
#include "qvrdev/log_text.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t kParamSize = 4;

std::string timeOfDay() {
  const time_t now = clockSource().now();
  tm local{};
  localtime_r(&now, &local);
  char text[16];
  const size_t length = std::strftime(text, sizeof text, "%H:%M:%S", &local);
  return {text, length};
}

// One record at the front of what is left of a log buffer.
class LogRecord {
 public:
  explicit LogRecord(Bytes left) : left_(left) {}

  // Whether its header and text lie within what is left. The last record may lack parameters and padding.
  bool isReadable() const { return left_.size() >= STRING_HEADER_SIZE && left_.size() >= afterText(); }

  uint8_t coreId() const { return left_[STRING_HEADER_CORE_ID]; }
  uint8_t coreType() const { return left_[STRING_HEADER_CORE_TYPE]; }

  // The framer and the control processor store two bytes a character, the character first.
  std::string text() const {
    const size_t step = coreType() == FRAMER_CORE || coreType() == CP_CORE ? 2 : 1;
    std::string text;
    for (size_t i = STRING_HEADER_SIZE; i < afterText(); i += step) {
      text += static_cast<char>(left_[i]);
    }
    return text;
  }

  // Always the twelve words behind the text, however many belong to the record.
  LogParams params() const {
    LogParams words{};
    for (size_t i = 0; i < words.size() && afterText() + kParamSize * (i + 1) <= left_.size(); i++) {
      words[i] = load_le32(&left_[afterText() + kParamSize * i]);
    }
    return words;
  }

  Bytes next() const {
    const size_t length = afterText() + kParamSize * numParams() + (textLength() & 1U);
    return left_.subspan(std::min(length, left_.size()));
  }

 private:
  size_t numParams() const { return left_[STRING_HEADER_NUM_PARAMS]; }
  size_t textLength() const { return left_[STRING_HEADER_TEXT_LENGTH]; }
  size_t afterText() const { return STRING_HEADER_SIZE + textLength(); }

  Bytes left_;
};

constexpr const char* tagOfCore(uint8_t coreType) {
  return coreType == FDU_CORE ? "FDU" : coreType == FRAMER_CORE ? "FRM" : "   ";
}

// The origin of a record. A core without a line of this device is shown by its own number.
std::string originOf(const LogRecord& record, const QVR_deviceInfo_t& device) {
  if (record.coreType() == CP_CORE) {
    return " CP - ";
  }
  const int core = record.coreId();
  const unsigned line = core < linesOfRecord(device) ? device.lineIDs[core] : record.coreId();
  return fmt::sprintf(" %s%02u - ", tagOfCore(record.coreType()), line);
}

}  // namespace

void gfast::QVR_sendLogMessage(QVR_deviceId_t xi_deviceId, const gfast_iocreq& xi_request) {
  const gfast_logalm_read& read = xi_request.req_u.logalm_read;
  const QVR_deviceInfo_t device = deviceRecord(xi_deviceId);
  const std::string time = timeOfDay();
  Bytes left(reinterpret_cast<const uint8_t*>(read.buf), std::min(read.datalen_copied_to_user, read.bufsize));
  while (!left.empty()) {
    const LogRecord record(left);
    if (!record.isReadable()) {
      return;
    }
    std::string line = time + originOf(record, device);
    line += renderLogText(record.text(), record.params(), QVR_K_MAX_LOG_STRING_LEN - 1 - line.size());
    callbacks().logMessageCB.notify(xi_deviceId, line.c_str());
    left = record.next();
  }
}

QVR_retval_t gfast::QVR_handleLogEvents(int xi_descriptor, QVR_deviceId_t xi_deviceId, int* xo_taken) {
  char records[QVR_K_MAX_EVT_BUFFER_LEN] = {};
  gfast_iocreq request = emptyRequest();
  request.req_u.logalm_read.buf = records;
  request.req_u.logalm_read.bufsize = sizeof records;
  int taken = 0;
  for (; taken < kMostLogBuffersInOneGo; taken++) {
    if (driver().request(xi_descriptor, DFEIOCLOGRD, request) < 0 ||
        request.req_u.logalm_read.datalen_copied_to_user == 0) {
      break;
    }
    if (callbacks().logMessageCB.load() != nullptr) {
      QVR_sendLogMessage(xi_deviceId, request);
    }
  }
  if (xo_taken != nullptr) {
    *xo_taken = taken;
  }
  return QVR_E_STATUS_OK;
}
