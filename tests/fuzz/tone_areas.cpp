// What a chip keeps by subcarrier, as it might be: the first byte chooses a command, three more which reads
// the others answer, in what order they come.
#include <algorithm>
#include <iterator>

#include "fuzz/fuzzed_console.h"

namespace {

constexpr const char* kCommands[] = {"show BITSps 0 us",
                                     "show BITSps 1 us",
                                     "show BITS-RMCps 0 ds",
                                     "show SNRps 0 us",
                                     "show SNRps 0 ds",
                                     "show ALNps 0 us",
                                     "show HLOGps 0 us",
                                     "show SATN 0 us",
                                     "show phy info 0",
                                     "show phy info 1 fe",
                                     "show phy params 0",
                                     "show afe-params 0",
                                     "show ETR 0",
                                     "show ETR 1",
                                     "show network-info",
                                     "show line status 0",
                                     "show channel status 0",
                                     "show gfast-counters 0"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) {
    return 0;
  }
  const uint8_t first = data[1];  // read that is answered
  const uint8_t count = data[2];
  const bool shifted = (data[3] & 1U) != 0;  // each read begins where the one before ended
  const Input bytes(data + 4, size - 4);
  unsigned reads = 0;
  size_t at = 0;
  const auto answer = [&](uint32_t code, gfast_iocreq& request) {
    gfast_memread& read = request.req_u.memread;
    if (code != DFEIOCMEMRD || bytes.empty()) {
      return false;
    }
    const unsigned number = reads++;
    if (number < first || number > first + count) {
      return false;
    }
    for (size_t i = 0; i < read.hw_mem_len; i++) {
      read.buf[i] = static_cast<char>(bytes[(at + i) % bytes.size()]);
    }
    at = shifted ? (at + read.hw_mem_len) % bytes.size() : 0;
    read.datalen_rcvd_from_hw = read.datalen_copied_to_user = read.hw_mem_len;
    return true;
  };
  FuzzedConsole::get().run(kCommands[data[0] % std::size(kCommands)], answer);
  return 0;
}
