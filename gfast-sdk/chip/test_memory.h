// Where a line's processor keeps the signals of tests.
#pragma once

#include <cstdint>

namespace gfast {

// Where a line's processor keeps test memory; n is the line's index within its device.
constexpr uint32_t QVR_K_FDU_BASE_ADDR = 0x90000000;
constexpr uint32_t QVR_K_LINK_ID_OFFSET = 23;
constexpr uint32_t QVR_G_GHS_TX_BUFF0_ADDR(uint32_t n) {
  return (QVR_K_FDU_BASE_ADDR | (n << QVR_K_LINK_ID_OFFSET)) + 0x0003C114;
}
constexpr uint32_t QVR_G_TEST_SNAPSHOT_COUNT_ADDR(uint32_t n) {
  return (QVR_K_FDU_BASE_ADDR | (n << QVR_K_LINK_ID_OFFSET)) + 0x00004940;
}
constexpr uint32_t QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(uint32_t n) {
  return (QVR_K_FDU_BASE_ADDR | (n << QVR_K_LINK_ID_OFFSET)) + 0x00017DD4;
}
constexpr uint32_t QVR_K_TEST_SYMBOL_SIZE = 8192;  // bytes of the transmit buffer and of a captured symbol

}  // namespace gfast
