// Field traces, and the same once more without addresses and serial numbers.
#include <string>
#include <utility>

#include "fuzz/fuzzed_console.h"
#include "gfast-lab/replay/blanked_trace.h"
#include "gfast-lab/replay/trace_reader.h"

using namespace gfast::replay;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    const std::string blanked = blankedText(parseTrace(textOf({data, size})));
    parseTrace(blanked);
  } catch (const TraceError& error) {
    if (std::string(error.what()).find('\n') != std::string::npos) {
      __builtin_trap();  // the message is one line
    }
  }
  return 0;
}
