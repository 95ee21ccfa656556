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

// New ones are erased.
class Flash {
 public:
  // Erases the sector that holds the address, or all sectors. Returns 0, or EINVAL: no such type or address.
  int erase(uint16_t type, uint32_t address);

  // Clears the bits that are 0 in the image. Returns 0 or an error, in which case nothing is written:
  //   EINVAL  no such address
  //   EFBIG   the image reaches past the end of the address's region
  int program(uint32_t address, std::span<const uint8_t> image);

  // Returns 0, or EINVAL: the range reaches past the end.
  int read(uint32_t address, std::span<uint8_t> out) const;

  // Of a region, as far as anything was ever programmed.
  std::span<const uint8_t> region(const FlashRegion& region) const;

 private:
  // Up to the last one that was ever programmed. What is behind is 0xFF, as after erasing, and takes no
  // memory.
  std::vector<uint8_t> bytes_;
};

}  // namespace gfast::board
