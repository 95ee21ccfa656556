// What the far end might answer: the first byte chooses a command, the next two the length that the driver
// tells, the rest is the answer to every message.
#include <algorithm>
#include <iterator>

#include "fuzz/fuzzed_console.h"

namespace {

constexpr const char* kCommands[] = {"show remote-management-counters 0",
                                     "show pmd-test-parameters 0",
                                     "show inventory 1",
                                     "show SNRps 0 ds",
                                     "show ALNps 0 ds",
                                     "show HLOGps 0 ds",
                                     "show SATN 0 ds",
                                     "show phy info 0 fe",
                                     "show afe-params 0 fe",
                                     "show gfast-counters 0 fe",
                                     "read memory 0 d0000000 1200 fe",
                                     "show network-info",
                                     "show line status 0",
                                     "show channel status 0 ds",
                                     "show ETR 0",
                                     "show line performance-counters 0 fe"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) {
    return 0;
  }
  const auto told = static_cast<uint32_t>(data[1] | (data[2] << 8));
  const Input bytes(data + 3, size - 3);
  const auto answer = [&](uint32_t code, gfast_iocreq& request) {
    gfast_farendmsg& message = request.req_u.farendmsg;
    if (code != DFEIOCFARENDMSG) {
      return false;
    }
    std::ranges::copy(bytes.first(std::min<size_t>(bytes.size(), message.bufsize)), message.buf);
    // 0xFFFF: all of it; the rest up to far more than there is room for.
    message.datalen_copied_to_user = told == 0xFFFF ? message.bufsize : told;
    return true;
  };
  FuzzedConsole::get().run(kCommands[data[0] % std::size(kCommands)], answer);
  return 0;
}
