#include "virtual-board/board/request_trace.h"

#include <fmt/format.h>

#include <cerrno>

#include "std/errno_names.h"

namespace gfast::board {

namespace {

std::string place(const TracedRequest& request) {
  char text[16];
  switch (request.kind) {
    case RequestKind::kMemRead:
    case RequestKind::kMemWrite:
    case RequestKind::kActivate:
    case RequestKind::kFlashErase:
    case RequestKind::kFlashProg:
    case RequestKind::kFlashRead:
      std::snprintf(text, sizeof text, "0x%08x", request.where);
      return text;
    case RequestKind::kFarEnd:
      return std::to_string(request.where);
    default:
      return "-";
  }
}

}  // namespace

RequestTrace::~RequestTrace() {
  if (file_ != nullptr) {
    std::fclose(file_);
  }
}

int RequestTrace::open(const std::string& path) {
  file_ = std::fopen(path.c_str(), "we");
  if (file_ == nullptr) {
    return errno;
  }
  std::setvbuf(file_, nullptr, _IOLBF, 0);
  return 0;
}

void RequestTrace::write(const TracedRequest& request) {
  if (file_ == nullptr) {
    return;
  }
  const std::string result = request.error == 0 ? "ok" : errnoName(request.error);
  const std::lock_guard lock(mutex_);
  std::fprintf(file_, "%s %d %s %s %u %s\n", fmt::format("{:.6f}", request.time).c_str(), request.device,
               requestName(request.kind), place(request).c_str(), request.length, result.c_str());
}

}  // namespace gfast::board
