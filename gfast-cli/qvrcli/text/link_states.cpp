#include "qvrcli/text/link_states.h"

#include <iterator>

namespace gfast::console {

namespace {

constexpr const char* kLinkStates[] = {
    "self test      ", "unit fail      ", "idle           ", "silent         ", "init hs        ",
    "init train     ", "show time      ", "deactivating 1 ", "deactivating 2 ", "pre-deactivating 1",
};

}  // namespace

const char* linkStateString(int xi_state) {
  return xi_state >= 0 && xi_state < static_cast<int>(std::size(kLinkStates)) ? kLinkStates[xi_state]
                                                                              : "Unknown        ";
}

}  // namespace gfast::console
