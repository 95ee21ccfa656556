// A chip's NOR flash: erasing sets the bits of whole sectors, programming can only clear bits.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "chip/flash_layout.h"

namespace gfast::board {

struct FlashRegion {
  uint32_t start;
  uint32_t end;  // one past the last byte
};

constexpr FlashRegion kBootloaderRegion{FLASH_BOOTLOADER_START, FLASH_MANUFACTURER_BLOCK_START};
constexpr FlashRegion kManufacturerRegion{FLASH_MANUFACTURER_BLOCK_START, FLASH_APP_FIRMWARE_START};
constexpr FlashRegion kAppRegion{FLASH_APP_FIRMWARE_START, FLASH_SIZE};

class Flash {
 public:
  // Erased to 0xFF.
  Flash() : bytes_(FLASH_SIZE, uint8_t{0xFF}) {}

  // Erases the sector that holds the address, or all sectors. Returns 0, or EINVAL: no such type or address.
  int erase(uint16_t type, uint32_t address);

  // Clears the bits that are 0 in the image. Returns 0 or an error, in which case nothing is written:
  //   EINVAL  no such address
  //   EFBIG   the image reaches past the end of the address's region
  int program(uint32_t address, std::span<const uint8_t> image);

  // Returns 0, or EINVAL: the range reaches past the end.
  int read(uint32_t address, std::span<uint8_t> out) const;

  std::span<const uint8_t> region(const FlashRegion& region) const {
    return std::span(bytes_).subspan(region.start, region.end - region.start);
  }

 private:
  std::vector<uint8_t> bytes_;
};

}  // namespace gfast::board
