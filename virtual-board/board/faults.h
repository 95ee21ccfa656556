// Requests that a board file wants to fail.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "virtual-board/board/board_config.h"

namespace gfast::board {

// The requests by the names that board files and request traces use; "flashread" and what follows cannot be
// made to fail. In the order of RequestKind.
enum class RequestKind {
  kOpen,
  kMemRead,
  kMemWrite,
  kActivate,
  kImgDnld,
  kFlashErase,
  kFlashProg,
  kLogCfg,
  kLogRead,
  kEventRead,
  kFarEnd,
  kFlashRead,
  kUnknown
};
const char* requestName(RequestKind kind);

// Whether a board file may name it.
bool isFaultRequest(std::string_view name);

class Faults {
 public:
  explicit Faults(const std::vector<FaultConfig>& faults);

  // Called once for every request, in order. The errno it shall fail with, or 0. Every entry that matches
  // counts the request; the first that has its turn decides.
  int match(int device, RequestKind kind, uint32_t address, uint32_t length);

 private:
  struct Fault {
    FaultConfig config;
    uint64_t seen = 0;
  };
  std::vector<Fault> faults_;
};

}  // namespace gfast::board
