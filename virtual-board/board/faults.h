// Requests that fail because a board file says so.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "virtual-board/board/request_kind.h"

namespace gfast::board {

struct FaultConfig {
  int device;
  RequestKind request;
  std::optional<uint32_t> address;  // empty: whatever the request touches
  uint32_t skip = 0;                // matching requests that succeed first
  uint32_t count = 1;               // how many fail then; 0: all
  int error = 0;
};

class Faults {
 public:
  explicit Faults(const std::vector<FaultConfig>& faults);

  // Called once for every request, in order. Returns the errno to fail with, or 0. Every entry that matches
  // counts the request; the first entry whose turn it is gives the errno.
  int match(int device, RequestKind kind, uint32_t address, uint32_t length);

 private:
  struct Fault {
    FaultConfig config;
    uint64_t seen = 0;
  };
  std::vector<Fault> faults_;
};

}  // namespace gfast::board
