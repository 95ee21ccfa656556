#include "qvrparams/startup_parameters.h"

#include <algorithm>

using namespace gfast;

namespace {

using Locked = std::lock_guard<std::mutex>;

}  // namespace

std::vector<uint8_t> StartupParameters::range(size_t offset, size_t length) const {
  const Locked locked(mutex_);
  const uint8_t* from = bytes_.data() + offset;
  return {from, from + length};
}

void StartupParameters::store(size_t offset, const std::vector<uint8_t>& bytes) {
  replace(offset, bytes);
}

bool StartupParameters::replace(size_t offset, const std::vector<uint8_t>& bytes) {
  const Locked locked(mutex_);
  uint8_t* to = bytes_.data() + offset;
  if (std::equal(bytes.begin(), bytes.end(), to)) {
    return false;
  }
  std::copy(bytes.begin(), bytes.end(), to);
  return true;
}
