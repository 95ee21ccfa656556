// Files of transmit signals.
#include <vector>

#include "fuzz/fuzzed_console.h"
#include "qvrcli/diagnostics/signal_files.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const InputFile file({data, size});
  std::vector<uint32_t> signal(QVR_K_SIGNAL_WORDS);
  uint32_t badLine = 0;
  gfast::console::loadSignalFromFile(file.path().c_str(), signal.data(), &badLine);
  return 0;
}
