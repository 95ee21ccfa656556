#include "virtual-board/chip/pending_records.h"

#include <gfast_api.h>

#include <algorithm>

#include "chip/log_records.h"
#include "std/byte_order.h"

namespace gfast::board {

namespace {

// Hosts read two parameters of every event.
constexpr size_t kMinEventParams = 2;

void append(std::deque<std::vector<uint8_t>>& queue, size_t limit, std::vector<uint8_t> record) {
  if (queue.size() == limit) {
    queue.pop_front();
  }
  queue.push_back(std::move(record));
}

}  // namespace

void PendingRecords::raiseEvent(double time, uint32_t type, std::span<const uint32_t> params) {
  std::vector<uint8_t> record(GFAST_EVENT_PARAMS + 4 * std::max(params.size(), kMinEventParams));
  const auto microseconds = static_cast<uint64_t>(time * 1e6);
  store_le32(record.data() + GFAST_EVENT_TIMESTAMP0, static_cast<uint32_t>(microseconds));
  store_le32(record.data() + GFAST_EVENT_TIMESTAMP1, static_cast<uint32_t>(microseconds >> 32));
  store_le32(record.data() + GFAST_EVENT_TYPE, type);
  for (size_t i = 0; i < params.size(); i++) {
    store_le32(record.data() + GFAST_EVENT_PARAMS + 4 * i, params[i]);
  }
  append(events_, kMaxEvents, std::move(record));
  arrivals_++;
}

void PendingRecords::raiseLog(uint8_t core, uint8_t line, std::string_view text,
                              std::span<const uint32_t> params) {
  const bool wide = core == FRAMER_CORE || core == CP_CORE;
  const size_t textLength = text.size() * (wide ? 2 : 1);
  std::vector<uint8_t> record{line, core, static_cast<uint8_t>(params.size()),
                              static_cast<uint8_t>(textLength)};
  for (const char c : text) {
    record.push_back(static_cast<uint8_t>(c));
    if (wide) {
      record.push_back(0);
    }
  }
  for (const uint32_t param : params) {
    record.resize(record.size() + 4);
    store_le32(record.data() + record.size() - 4, param);
  }
  if (textLength % 2 != 0) {
    record.push_back(0);
  }
  append(logs_, kMaxLogs, std::move(record));
  arrivals_++;
}

bool PendingRecords::takeEvent(std::span<uint8_t> out, size_t& length) {
  length = 0;
  if (events_.empty()) {
    return true;
  }
  const auto& record = events_.front();
  if (record.size() > out.size()) {
    return false;
  }
  std::copy(record.begin(), record.end(), out.begin());
  length = record.size();
  events_.pop_front();
  return true;
}

bool PendingRecords::takeLogs(std::span<uint8_t> out, size_t& length) {
  length = 0;
  if (!logsEnabled_ || logs_.empty()) {
    return true;
  }
  while (!logs_.empty() && logs_.front().size() <= out.size() - length) {
    std::copy(logs_.front().begin(), logs_.front().end(), out.begin() + static_cast<long>(length));
    length += logs_.front().size();
    logs_.pop_front();
  }
  return length != 0;
}

void PendingRecords::clear() {
  events_.clear();
  logs_.clear();
}

}  // namespace gfast::board
