#include "qvrcli/reading/line_reading.h"

#include <fmt/format.h>

#include <iterator>

namespace gfast::console {

namespace {

constexpr const char* kStateWords[] = {"self-test",      "unit-fail",         "idle",     "silent",
                                       "handshake",      "training",          "showtime", "deactivating-1",
                                       "deactivating-2", "pre-deactivating-1"};

constexpr const char* kCauses[] = {"success",
                                   "the configuration contradicts itself",
                                   "the configuration cannot be met on this line",
                                   "the ends do not understand each other",
                                   "no modem at the far end",
                                   "another reason"};

}  // namespace

const char* stateWord(G9701_linkState_t state) {
  const auto number = static_cast<uint32_t>(state);
  return number < std::size(kStateWords) ? kStateWords[number] : "unknown";
}

std::string causeText(G9972_initSuccessFailureCause_t cause) {
  return cause < std::size(kCauses) ? kCauses[cause] : fmt::format("cause {}", cause);
}

}  // namespace gfast::console
