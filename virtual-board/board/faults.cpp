#include "virtual-board/board/faults.h"

#include <algorithm>

namespace gfast::board {

namespace {

bool touches(const FaultConfig& fault, uint32_t address, uint32_t length) {
  // A request without bytes touches the address it names.
  return !fault.address || (*fault.address >= address && *fault.address - address < std::max(length, 1U));
}

}  // namespace

Faults::Faults(const std::vector<FaultConfig>& faults) {
  for (const FaultConfig& fault : faults) {
    faults_.push_back({fault});
  }
}

int Faults::match(int device, RequestKind kind, uint32_t address, uint32_t length) {
  int error = 0;
  for (Fault& fault : faults_) {
    const FaultConfig& config = fault.config;
    if (config.device != device || config.request != kind || !touches(config, address, length)) {
      continue;
    }
    const uint64_t before = fault.seen++;
    const bool turn = before >= config.skip && (config.count == 0 || before - config.skip < config.count);
    if (turn && error == 0) {
      error = config.error;
    }
  }
  return error;
}

}  // namespace gfast::board
