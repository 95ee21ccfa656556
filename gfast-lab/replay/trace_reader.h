// Reads field traces. Whatever the bytes are, the result is a trace or one message.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "driver/field_trace.h"

namespace gfast::replay {

// A file may have so many bytes, and its exchanges may carry so many.
constexpr size_t kMostTraceBytes = size_t{64} << 20;
constexpr size_t kMostCarriedBytes = size_t{64} << 20;

constexpr std::string_view kUnknownMoment = "-";

// The message begins with the line's number: "12: not a hexadecimal number: 0g".
class TraceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct TracedExchange {
  uint64_t time_us = 0;  // since the recording began
  TraceThread thread = TraceThread::kCommand;
  TraceRequest request;
  std::shared_ptr<const TraceAnswer> answer;  // never null; of those that say "same", the earlier one
  bool same = false;
};

struct FieldTrace {
  std::string started{kUnknownMoment};  // the moment of the recording's beginning, as the first line tells it
  std::optional<int64_t> started_us;    // the same since the epoch
  bool blanked = false;                 // recorded without MAC addresses and serial numbers
  bool cut = false;                     // the last exchange is not whole and was left out
  std::vector<TracedExchange> exchanges;
};

// Throws TraceError.
FieldTrace parseTrace(std::string_view text);

// Throws TraceError, its message with the file's name before it: what parseTrace says, or why the file cannot
// be read.
FieldTrace readTrace(const std::string& file);

}  // namespace gfast::replay
