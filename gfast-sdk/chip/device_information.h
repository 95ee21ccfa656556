// The device-information image: a chip's identity, its state, and what its processors asserted.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gfast {

constexpr uint32_t VIRT_ADDR_DEVICE_INFO_READ = 0xE3100000;
constexpr uint32_t VIRT_ADDR_DEVICE_INFO_READ_AND_CLEAR = 0xE3000000;

// DEV_INF_S, the device-information image: 260 bytes of little-endian words at these offsets.
constexpr size_t DEV_INF_SIZE = 260;
constexpr size_t DEV_INF_VERSION = 0;
constexpr size_t DEV_INF_FIRMWARE_VERSION = 4;    // profile, rc, ga, chipset from bit 0 up, 8 bits each
constexpr size_t DEV_INF_DATE = 8;                // six words, characters in bits 0-7 and 16-23
constexpr size_t DEV_INF_TIME = 32;               // one word, likewise
constexpr size_t DEV_INF_LINK_STARTUP_TIME = 36;  // milliseconds
constexpr size_t DEV_INF_LINK_ASSERT_INFO = 40;
constexpr size_t DEV_INF_GHS_TIMES = 128;    // four words
constexpr size_t DEV_INF_LAST_SIGNAL = 144;  // downstream in byte 0, upstream in byte 2
constexpr size_t DEV_INF_INIT_FAILURE_CAUSE = 148;
constexpr size_t DEV_INF_TEMPERATURE = 152;  // degrees Celsius
constexpr size_t DEV_INF_VENDOR_ID = 156;    // words of country, vendor and revision (ITU-T G.994.1)
constexpr size_t DEV_INF_LINK_ASSERT_EXTENSION = 168;
constexpr size_t DEV_INF_CP_ASSERT_INFO = 200;
constexpr size_t DEV_INF_CP_ASSERT_EXTENSION = 244;

// CPU_ASSERT_INFO_S, what a processor asserted, and CPU_ASSERT_INFO_EXTENSION_S, when: 32-bit words. A link
// has the pair of its framer, then that of its FDU.
constexpr size_t CPU_ASSERT_INFO_SIZE = 44;
constexpr size_t CPU_ASSERT_INFO_NUMBER = 0;  // of assertions since start
constexpr size_t CPU_ASSERT_INFO_ASSERT_ID = 4;
constexpr size_t CPU_ASSERT_INFO_NUM_PARAMS = 8;
constexpr size_t CPU_ASSERT_INFO_PARAMS = 12;
constexpr size_t CPU_ASSERT_MAX_PARAMS = 8;
constexpr size_t CPU_ASSERT_EXTENSION_SIZE = 16;
constexpr size_t CPU_ASSERT_EXTENSION_SYMBOL_COUNTER = 0;  // 0: the processor did not assert
constexpr size_t CPU_ASSERT_EXTENSION_TBM_SYMBOL = 4;
constexpr size_t CPU_ASSERT_EXTENSION_TBM_PHASE = 8;
constexpr size_t CPU_ASSERT_EXTENSION_TBM_SAMPLE = 12;

}  // namespace gfast
