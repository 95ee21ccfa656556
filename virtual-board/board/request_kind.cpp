#include "virtual-board/board/request_kind.h"

#include <algorithm>
#include <iterator>

namespace gfast::board {

namespace {

// In the order of RequestKind.
constexpr std::string_view kNames[] = {"open",       "memread",   "memwrite", "activate", "imgdnld",
                                       "flasherase", "flashprog", "logcfg",   "logread",  "eventread",
                                       "farend",     "flashread", "unknown"};
static_assert(std::size(kNames) == static_cast<size_t>(RequestKind::kUnknown) + 1);

}  // namespace

const char* requestName(RequestKind kind) {
  return kNames[static_cast<size_t>(kind)].data();
}

std::optional<RequestKind> requestByName(std::string_view name) {
  const auto* found = std::find(std::begin(kNames), std::end(kNames), name);
  return found == std::end(kNames) ? std::nullopt
                                   : std::optional(static_cast<RequestKind>(found - std::begin(kNames)));
}

}  // namespace gfast::board
