// Registers of a chip: reset, boot stage, and the words by which its lines are controlled.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gfast {

constexpr uint32_t PLL_MUX_REG_ADDRESS = 0xE0000018;
constexpr uint32_t IO_BASE_ADDRESS = 0xE0000000;
constexpr uint32_t RESET_REG_OFFSET = 0x14;
constexpr uint32_t RESET_REG_ADDRESS = IO_BASE_ADDRESS + RESET_REG_OFFSET;
constexpr uint32_t RESET_REGISTER_VALUE = 0x80000000;
constexpr uint32_t VIRT_ADDR_B0_REGS = 0xE1000000;  // 64 bytes
constexpr size_t B0_REGS_SIZE = 64;
constexpr size_t B0_REGS_MAC_ADDRESS = 10;  // 6 bytes
constexpr size_t B0_REGS_LINK_STATES = 36;  // little-endian word, a nibble a line
constexpr uint32_t ROM_DEFAULT_ENTRY_POINT = 0xFFFFFFF0;
constexpr uint32_t VIRT_BASE_ADDR_CONFIGURATION_PARAMS = 0xE9000000;
constexpr uint32_t CONFIGURE_PARAMS_UAS_OFFSET = 0x00100000;
constexpr uint32_t CONFIGURE_PARAMS_REINIT_OFFSET = 0x00200000;
constexpr uint32_t CONFIGURE_PARAMS_LINKS_PROVISION = 0x00300000;
constexpr uint32_t VIRT_CONFIGURE_PARAMS_LINK_ID_OFFSET = 16;
constexpr uint32_t VIRT_ADDR_USER_ACTIVATION =
    VIRT_BASE_ADDR_CONFIGURATION_PARAMS + CONFIGURE_PARAMS_UAS_OFFSET;
constexpr uint32_t VIRT_ADDR_REINIT(uint32_t linkId) {
  return (VIRT_BASE_ADDR_CONFIGURATION_PARAMS + CONFIGURE_PARAMS_REINIT_OFFSET) |
         (linkId << VIRT_CONFIGURE_PARAMS_LINK_ID_OFFSET);
}
constexpr uint32_t VIRT_ADDR_LINKS_PROVISION(uint32_t linkId) {
  return (VIRT_BASE_ADDR_CONFIGURATION_PARAMS + CONFIGURE_PARAMS_LINKS_PROVISION) |
         (linkId << VIRT_CONFIGURE_PARAMS_LINK_ID_OFFSET);
}

// Test modes of a line, a little-endian word each; linkId is the line's index within its device.
constexpr uint32_t VIRT_ADDR_TEST_MODE(uint32_t linkId, uint32_t selector) {
  return 0xED000000U | (linkId << 20) | (selector << 16);
}
constexpr uint32_t VIRT_ADDR_TPS_TESTMODE(uint32_t linkId) {
  return VIRT_ADDR_TEST_MODE(linkId, 0);
}
constexpr uint32_t VIRT_ADDR_RTX_TESTMODE(uint32_t linkId) {
  return VIRT_ADDR_TEST_MODE(linkId, 1);
}
constexpr uint32_t VIRT_ADDR_DRA_TESTMODE(uint32_t linkId) {
  return VIRT_ADDR_TEST_MODE(linkId, 2);
}

}  // namespace gfast
