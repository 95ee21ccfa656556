// Where a chip keeps who is at the ends of a line.
#pragma once

#include <cstdint>

namespace gfast {

// The inventory area of a line: the local end's record, then the far end's response as it was last received.
constexpr uint32_t VIRT_BASE_ADDR_INVENTORY_READ = 0xF1000000;
constexpr uint32_t VIRT_BASE_ADDR_INVENTORY_PER_LINE_LINK_ID_OFFSET = 20;
constexpr uint32_t VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(uint32_t linkId) {
  return VIRT_BASE_ADDR_INVENTORY_READ | (linkId << VIRT_BASE_ADDR_INVENTORY_PER_LINE_LINK_ID_OFFSET);
}

// sInventoryDb, the local end's record.
constexpr uint32_t INVENTORY_DB_SIZE = 60;
constexpr uint32_t INVENTORY_DB_FTU_GHS_VENDOR = 0;  // 8 bytes
constexpr uint32_t INVENTORY_DB_FTU_VERSION = 8;     // one word, four version bytes
constexpr uint32_t INVENTORY_DB_SYSTEM_VENDOR = 12;  // 8 bytes
constexpr uint32_t INVENTORY_DB_SYSTEM_SERIAL = 20;  // 32 bytes
constexpr uint32_t INVENTORY_DB_FTU_VENDOR = 52;     // 8 bytes: the far end's G.hs vendor

// INVENTORY_RESPONSE_S, what the far end answers to an inventory request.
constexpr uint32_t INVENTORY_RESPONSE_SIZE = 56;
constexpr uint32_t INVENTORY_RESPONSE_VENDOR_ID = 0;       // 8 bytes
constexpr uint32_t INVENTORY_RESPONSE_VERSION_NUMBER = 8;  // 16 bytes, text
constexpr uint32_t INVENTORY_RESPONSE_SERIAL_NUMBER = 24;  // 32 bytes, text

constexpr uint32_t NE_AND_FE_INVENTORY_SIZE = INVENTORY_DB_SIZE + INVENTORY_RESPONSE_SIZE;

}  // namespace gfast
