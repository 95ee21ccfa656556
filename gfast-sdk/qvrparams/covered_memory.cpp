#include "qvrparams/covered_memory.h"

#include <array>

using namespace gfast;

namespace {

bool isOdd(size_t length) {
  return length % 2 != 0;
}

}  // namespace

QVR_retval_t gfast::readCovered(QVR_deviceId_t device, uint32_t address, std::vector<uint8_t>& bytes) {
  const size_t length = bytes.size();
  bytes.resize(isOdd(length) ? length + 1 : length);
  const QVR_retval_t status = QVR_readmem(device, address, bytes.data(), static_cast<uint32_t>(bytes.size()));
  bytes.resize(length);
  return status;
}

QVR_retval_t gfast::writeCovered(QVR_deviceId_t device, uint32_t address, std::vector<uint8_t> bytes) {
  if (isOdd(bytes.size())) {
    std::array<uint8_t, 2> lastAndNeighbour{};
    const uint32_t last = address + static_cast<uint32_t>(bytes.size()) - 1;
    const QVR_retval_t status = QVR_readmem(device, last, lastAndNeighbour.data(), lastAndNeighbour.size());
    if (QVR_STATUS_ERROR(status)) {
      return status;
    }
    bytes.push_back(lastAndNeighbour[1]);
  }
  return QVR_writemem(device, address, bytes.data(), static_cast<uint32_t>(bytes.size()));
}
