// The records in a log buffer: the chip's own messages.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gfast {

// STRING_HEADER_S, the head of each record in a log buffer: four bytes, then the text (a printf format; two
// bytes a character from the framer and the control processor), the parameters (little-endian words), and one
// byte of padding when the text length is odd.
constexpr size_t STRING_HEADER_CORE_ID = 0;  // index of the line within the device
constexpr size_t STRING_HEADER_CORE_TYPE = 1;
constexpr size_t STRING_HEADER_NUM_PARAMS = 2;
constexpr size_t STRING_HEADER_TEXT_LENGTH = 3;
constexpr size_t STRING_HEADER_SIZE = 4;

enum LOG_CORE_TYPE_E : uint8_t { FDU_CORE = 0, FRAMER_CORE = 1, CP_CORE = 2, INVALID_CORE_TYPE = 3 };

}  // namespace gfast
