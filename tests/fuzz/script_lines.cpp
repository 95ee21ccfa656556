// Script lines through the real interpreter. An input that takes too long is a finding: see `run`.
#include <string>

#include "fuzz/fuzzed_console.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string lines(textOf({data, size}));
  if (lines.find('/') != std::string::npos) {
    return 0;  // commands write files; those of other folders are not the fuzzer's
  }
  FuzzedConsole::get().run(lines, {});
  return 0;
}
