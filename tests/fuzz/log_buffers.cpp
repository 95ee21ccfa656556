// Log records as a chip might hand them over: the input is one buffer.
#include <qvr.h>

#include <algorithm>

#include "fuzz/fuzzed_console.h"
#include "qvrdev/device_table.h"
#include "qvrdev/log_records.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input buffer(data, size);
  const auto nextLogs = [&buffer](uint32_t code, gfast_iocreq& request) {
    gfast_logalm_read& read = request.req_u.logalm_read;
    if (code != DFEIOCLOGRD) {
      return false;
    }
    const size_t copied = std::min<size_t>(buffer.size(), read.bufsize);
    std::ranges::copy(buffer.first(copied), read.buf);
    read.datalen_copied_to_user = static_cast<uint32_t>(buffer.size());  // more than there is room for, too
    buffer = {};
    return true;
  };
  FuzzedConsole::get().act([] { gfast::QVR_handleLogEvents(gfast::openDescriptor(0), 0); }, nextLogs);
  return 0;
}
