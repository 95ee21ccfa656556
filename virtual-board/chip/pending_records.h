// Event records and log records of a chip that the host has not read yet, as the driver returns them.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string_view>
#include <vector>

namespace gfast::board {

class PendingRecords {
 public:
  // A new record replaces the oldest when there are so many.
  static constexpr size_t kMaxEvents = 16384;
  static constexpr size_t kMaxLogs = 4096;

  void raiseEvent(double time, uint32_t type, std::span<const uint32_t> params);
  void raiseLog(uint8_t core, uint8_t line, std::string_view text, std::span<const uint32_t> params);

  // From now on the host can read log records, those of before as well.
  void enableLogs() { logsEnabled_ = true; }
  bool logsEnabled() const { return logsEnabled_; }

  // Whether the host can read something: an event, or a log record when logs are enabled.
  bool any() const { return !events_.empty() || (logsEnabled_ && !logs_.empty()); }

  // How many records have come so far, taken or not.
  size_t arrivals() const { return arrivals_; }

  // Takes one event; length 0: there is none. False: it does not fit, and stays.
  bool takeEvent(std::span<uint8_t> out, size_t& length);
  // Takes as many whole log records as fit. False: not even the first one fits.
  bool takeLogs(std::span<uint8_t> out, size_t& length);
  // Drops all records. Logs stay enabled or disabled.
  void clear();

 private:
  std::deque<std::vector<uint8_t>> events_;
  std::deque<std::vector<uint8_t>> logs_;
  bool logsEnabled_ = false;
  size_t arrivals_ = 0;
};

}  // namespace gfast::board
