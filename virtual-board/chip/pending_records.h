// What a chip has to say and the host has not read yet: event records and log records, as the driver hands
// them out.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string_view>
#include <vector>

namespace gfast::board {

class PendingRecords {
 public:
  // The oldest give way to new ones.
  static constexpr size_t kMaxEvents = 16384;
  static constexpr size_t kMaxLogs = 4096;

  void raiseEvent(double time, uint32_t type, std::span<const uint32_t> params);
  void raiseLog(uint8_t core, uint8_t line, std::string_view text, std::span<const uint32_t> params);

  // From now on log records reach the host; those of before are kept for it.
  void enableLogs() { logsEnabled_ = true; }
  bool logsEnabled() const { return logsEnabled_; }

  // Something to read: an event, or a log record with logs enabled.
  bool any() const { return !events_.empty() || (logsEnabled_ && !logs_.empty()); }

  // One event, or nothing pending (0 bytes). False: it does not fit and stays.
  bool takeEvent(std::span<uint8_t> out, size_t& length);
  // As many whole log records as fit. False: not even the first does.
  bool takeLogs(std::span<uint8_t> out, size_t& length);
  // What the host has not read is lost; whether it wants log records stays.
  void clear();

 private:
  std::deque<std::vector<uint8_t>> events_;
  std::deque<std::vector<uint8_t>> logs_;
  bool logsEnabled_ = false;
};

}  // namespace gfast::board
