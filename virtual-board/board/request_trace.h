// A file with one line for each driver request: seconds since start, device, request, address or line,
// length, result.
#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

#include "virtual-board/board/request_kind.h"

namespace gfast::board {

struct TracedRequest {
  double time = 0;
  int device = 0;
  RequestKind kind = RequestKind::kUnknown;
  uint32_t where = 0;  // memory and flash requests: an address; far-end messages: a line
  uint32_t length = 0;
  int error = 0;
};

class RequestTrace {
 public:
  RequestTrace() = default;
  RequestTrace(const RequestTrace&) = delete;
  RequestTrace& operator=(const RequestTrace&) = delete;
  ~RequestTrace();

  // Returns 0, or the errno from creating the file.
  int open(const std::string& path);

  // Does nothing without a file. A line that cannot be written is lost.
  void write(const TracedRequest& request);

 private:
  std::mutex mutex_;
  std::FILE* file_ = nullptr;
};

}  // namespace gfast::board
