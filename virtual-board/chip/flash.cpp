#include "virtual-board/chip/flash.h"

#include <gfast_api.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace gfast::board {

namespace {

const FlashRegion* regionOf(uint32_t address) {
  static constexpr FlashRegion regions[] = {kBootloaderRegion, kManufacturerRegion, kAppRegion};
  const auto* found = std::find_if(
      std::begin(regions), std::end(regions),
      [address](const FlashRegion& region) { return address >= region.start && address < region.end; });
  return found == std::end(regions) ? nullptr : found;
}

uint32_t sectorSize(uint16_t type) {
  switch (type) {
    case FLASHERASE_4KB:
      return FLASH_SECTOR_4KB;
    case FLASHERASE_64KB:
      return FLASH_SECTOR_64KB;
    case FLASHERASE_ALL:
      return FLASH_SIZE;
    default:
      return 0;
  }
}

}  // namespace

int Flash::erase(uint16_t type, uint32_t address) {
  const uint32_t size = sectorSize(type);
  const uint32_t within = type == FLASHERASE_ALL ? 0 : address;
  if (size == 0 || within >= FLASH_SIZE) {
    return EINVAL;
  }
  const uint32_t start = within - within % size;
  std::fill_n(bytes_.begin() + start, size, uint8_t{0xFF});
  return 0;
}

int Flash::program(uint32_t address, std::span<const uint8_t> image) {
  const FlashRegion* region = regionOf(address);
  if (region == nullptr) {
    return EINVAL;
  }
  if (image.size() > region->end - address) {
    return EFBIG;
  }
  std::transform(image.begin(), image.end(), bytes_.begin() + address, bytes_.begin() + address,
                 [](uint8_t wanted, uint8_t present) { return static_cast<uint8_t>(wanted & present); });
  return 0;
}

int Flash::read(uint32_t address, std::span<uint8_t> out) const {
  if (address > FLASH_SIZE || out.size() > FLASH_SIZE - address) {
    return EINVAL;
  }
  std::copy_n(bytes_.begin() + address, out.size(), out.begin());
  return 0;
}

}  // namespace gfast::board
