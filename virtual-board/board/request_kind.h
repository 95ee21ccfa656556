// The kinds of driver requests, and their names in board files and request traces.
#pragma once

#include <optional>
#include <string_view>

namespace gfast::board {

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

// Whether a board file can make such a request fail.
constexpr bool mayFail(RequestKind kind) {
  return kind <= RequestKind::kFarEnd;
}

const char* requestName(RequestKind kind);

// Empty for a name that is not known.
std::optional<RequestKind> requestByName(std::string_view name);

}  // namespace gfast::board
