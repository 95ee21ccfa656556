#include "virtual-board/chip/flash.h"

#include <gfast_api.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace gfast::board {

namespace {

constexpr uint8_t kErased = 0xFF;

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
  const size_t start = within - within % size;
  const auto sector = std::span(bytes_).subspan(std::min(start, bytes_.size()));
  std::ranges::fill(sector.first(std::min<size_t>(size, sector.size())), kErased);
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
  bytes_.resize(std::max(bytes_.size(), address + image.size()), kErased);
  std::transform(image.begin(), image.end(), bytes_.begin() + address, bytes_.begin() + address,
                 [](uint8_t wanted, uint8_t present) { return static_cast<uint8_t>(wanted & present); });
  return 0;
}

int Flash::read(uint32_t address, std::span<uint8_t> out) const {
  if (address > FLASH_SIZE || out.size() > FLASH_SIZE - address) {
    return EINVAL;
  }
  const auto programmed = region({address, address + static_cast<uint32_t>(out.size())});
  std::ranges::fill(std::ranges::copy(programmed, out.begin()).out, out.end(), kErased);
  return 0;
}

std::span<const uint8_t> Flash::region(const FlashRegion& region) const {
  const size_t from = std::min<size_t>(region.start, bytes_.size());
  return std::span(bytes_).subspan(from, std::min<size_t>(region.end, bytes_.size()) - from);
}

}  // namespace gfast::board
