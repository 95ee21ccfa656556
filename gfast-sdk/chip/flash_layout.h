// The flash of a chip.
#pragma once

#include <cstdint>

namespace gfast {

// Sectors of two sizes, three regions.
constexpr uint32_t FLASH_SECTOR_4KB = 0x1000;
constexpr uint32_t FLASH_SECTOR_64KB = 0x10000;
constexpr uint32_t FLASH_BOOTLOADER_START = 0x00000;
constexpr uint32_t FLASH_MANUFACTURER_BLOCK_START = 0x10000;
constexpr uint32_t FLASH_APP_FIRMWARE_START = 0x20000;
constexpr uint32_t FLASH_SIZE = 0x100000;

}  // namespace gfast
