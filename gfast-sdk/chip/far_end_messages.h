// Messages to the modem at the far end of a line, and what it answers to them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gfast {

// Header of a far-end management message, little-endian on the wire.
constexpr size_t MGMT_HEADER_SIZE = 12;
constexpr size_t MGMT_HEADER_OPCODE = 0;   // 2 bytes
constexpr size_t MGMT_HEADER_LEN = 2;      // 2 bytes
constexpr size_t MGMT_HEADER_SN = 4;       // 2 bytes, sequence number; 2 reserved bytes follow
constexpr size_t MGMT_HEADER_ADDRESS = 8;  // 4 bytes

// Reading far-end memory (MGMT_FAR_END_REQ_TYPE_READMEM): the request is a header whose len is the number of
// bytes wanted, at most MGMT_MAX_DATA; the response is the same header, its opcode marked as a response,
// followed by that many bytes. A far end that refuses answers with a header of MGMT_OPCODE_NACK.
constexpr uint16_t MGMT_OPCODE_READMEM = 2;
constexpr uint16_t MGMT_OPCODE_WRITEMEM = 3;
constexpr uint16_t MGMT_OPCODE_RESPONSE = 0x8000;
constexpr uint16_t MGMT_OPCODE_NACK = 0xFFFF;
constexpr size_t MGMT_MAX_DATA = 512;  // bytes one exchange carries

// Request for a block of a vector of test parameters (MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ): the
// vector's id in one byte, then the first and the last subcarrier, 16 bits each. Response: 16 bits of
// measurement time, then a byte a subcarrier; of the SNR, SNR in dB = byte / 2 - 32 and 255 for none.
constexpr size_t PMD_VECTOR_REQUEST_SIZE = 5;
constexpr size_t PMD_VECTOR_REQUEST_ID = 0;
constexpr size_t PMD_VECTOR_REQUEST_FIRST = 1;
constexpr size_t PMD_VECTOR_REQUEST_LAST = 3;
constexpr size_t PMD_VECTOR_RESPONSE_HEADER_SIZE = 2;
constexpr uint32_t PMD_VECTOR_MAX_SUBCARRIERS = 248;
constexpr uint8_t G9701_PMD_TEST_PARAMS_VECTOR_ID_SNR = 4;
constexpr uint8_t PMD_VECTOR_NO_VALUE = 255;
// A far end that refuses answers with this one byte alone.
constexpr uint8_t PMD_VECTOR_NACK = 0xFF;

}  // namespace gfast
