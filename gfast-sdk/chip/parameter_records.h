// Where a chip keeps its start-up parameters: the dictionary that tells, and a line's own area.
#pragma once

#include <cstddef>
#include <cstdint>

#include "chip/parameter_ids.h"

namespace gfast {

// The dictionary in chip memory: a header of three little-endian words, then the entries, a word each.
constexpr uint32_t VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY = 0xEA000000;
constexpr size_t PARAMS_DICTIONARY_ADDRESS = 0;  // params_address
constexpr size_t PARAMS_DICTIONARY_PARAMS_SIZE = 4;
constexpr size_t PARAMS_DICTIONARY_SIZE = 8;
constexpr size_t PARAMS_DICTIONARY_HEADER_SIZE = 12;

// An entry word, bits from the least significant: param id 10, length 9 (0: the word is unused), offset 11,
// eConfigState 1, eConfigType 1.
constexpr uint32_t PARAMS_ENTRY_ID(uint32_t word) {
  return word & 0x3FFU;
}
constexpr uint32_t PARAMS_ENTRY_LENGTH(uint32_t word) {
  return (word >> 10) & 0x1FFU;
}
constexpr uint32_t PARAMS_ENTRY_OFFSET(uint32_t word) {
  return (word >> 19) & 0x7FFU;
}
constexpr uint32_t PARAMS_ENTRY_STATE(uint32_t word) {
  return (word >> 30) & 1U;
}
constexpr uint32_t PARAMS_ENTRY_TYPE(uint32_t word) {
  return word >> 31;
}
constexpr uint32_t PARAMS_ENTRY(uint32_t id, uint32_t length, uint32_t offset, uint32_t state,
                                uint32_t type) {
  return id | length << 10 | offset << 19 | state << 30 | type << 31;
}

// Where a line's own copy of the parameters lies; linkId is the line's index within its device.
constexpr uint32_t VIRT_ADDR_CONFIG_PER_LINE_LINK_ID_OFFSET = 20;
constexpr uint32_t VIRT_ADDR_CONFIG_PER_LINE(uint32_t linkId) {
  return 0xEC000000U | (linkId << VIRT_ADDR_CONFIG_PER_LINE_LINK_ID_OFFSET);
}

struct sParamsDictionaryHeader {
  uint32_t params_address;   // device address of the startup-parameters area
  uint32_t params_size;      // bytes of that area
  uint32_t dictionary_size;  // bytes of the entries
};

}  // namespace gfast
