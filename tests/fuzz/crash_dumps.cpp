// Crash dump files.
#include <array>

#include "fuzz/fuzzed_console.h"
#include "qvrcli/diagnostics/crash_dump.h"

using namespace gfast::console;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const InputFile file({data, size});
  for (const int addresses : {1, 4}) {
    std::array<DEV_INF_S, QVR_K_MAX_DEVICES> blocks{};
    loadDeviceInfoFromFile(file.path().c_str(), blocks.data(), addresses);
    CLI_leadingAssert_t first{};
    findLeadingAssert(blocks.data(), &first);
  }
  return 0;
}
