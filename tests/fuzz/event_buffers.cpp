// Events as a chip might hand them over: of each 20 bytes of input the first two are what the driver says it
// copied, the rest is the record.
#include <qvr.h>

#include <cstring>

#include "fuzz/fuzzed_console.h"
#include "qvrdev/device_events.h"
#include "qvrdev/device_table.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kRecord = 20;
  Input left(data, size);
  const auto nextEvent = [&left](uint32_t code, gfast_iocreq& request) {
    gfast_logalm_read& read = request.req_u.logalm_read;
    if (code != DFEIOCALMRD) {
      return false;
    }
    read.datalen_copied_to_user = 0;
    if (left.size() >= kRecord) {
      read.datalen_copied_to_user = (left[0] | (left[1] << 8)) == 0xFFFF ? 0xFFFFFFFF : left[0];
      std::memcpy(read.buf, left.data() + 2, kRecord - 2);
      left = left.subspan(kRecord);
    }
    return true;
  };
  FuzzedConsole::get().act(
      [] {
        for (const QVR_deviceId_t device : {0, 1}) {
          gfast::QVR_handleAlarm(gfast::openDescriptor(device), device);
        }
      },
      nextEvent);
  return 0;
}
