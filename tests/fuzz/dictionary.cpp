// The parameter dictionary as a chip might have it: its header and entries, and behind them the parameters.
#include <memory>

#include "fuzz/fuzzed_console.h"
// Not only its header: the dictionary is loaded once in a process, but here for every input.
#include "qvrparams/dictionary.cpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr uint32_t kArea = 0x1000;
  constexpr size_t kMostDictionary = 600;
  const Input input(data, size);
  const Input dictionary = input.first(std::min(size, kMostDictionary));
  const Input parameters = input.subspan(dictionary.size());
  const auto answer = [&](uint32_t code, gfast_iocreq& request) {
    return code == DFEIOCMEMRD &&
           (answerRead(request, VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY, kArea, dictionary) ||
            answerRead(request, 0xEC000000, kArea, parameters) ||
            answerRead(request, 0xE9000000, kArea, parameters));
  };
  FuzzedConsole& console = FuzzedConsole::get();
  delete paramsDictionary.exchange(nullptr);
  console.run("show dictionary\nshow params 0\nshow line config 0\nconfigure\nget 0\nsave 0\nshow", answer);
  delete paramsDictionary.exchange(nullptr);
  return 0;
}
