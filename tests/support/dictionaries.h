// Dictionaries of parameters as chips hold them, and the requests that load them.
#pragma once

#include "chip/parameter_records.h"
#include "support/driver_script.h"

using namespace gfast;

constexpr uint32_t kArea = 0xEB000000;  // where these chips keep their parameters
constexpr uint32_t kEntries = VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY + 12;

struct Entry {
  uint32_t id;
  uint32_t length;
  uint32_t offset;
  eConfigType type = CONFIG_TYPE_PER_DEVICE;
  eConfigState state = CONFIG_STATE_SYSTEM;
};

inline Bytes entryWords(const std::vector<Entry>& entries) {
  Bytes bytes;
  for (const Entry& entry : entries) {
    append32(bytes,
             entry.id | entry.length << 10 | entry.offset << 19 | entry.state << 30 | entry.type << 31);
  }
  return bytes;
}

inline Script readsHeader(uint32_t address, uint32_t paramsSize, uint32_t dictionarySize) {
  return reads(0, VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY,
               words({address, paramsSize, dictionarySize}));
}

inline Script readsEntries(const std::vector<Entry>& entries) {
  return readsInPieces(0, kEntries, entryWords(entries));
}

inline Script readsDictionary(uint32_t paramsSize, const std::vector<Entry>& entries) {
  return readsHeader(kArea, paramsSize, static_cast<uint32_t>(entryWords(entries).size())) +
         readsEntries(entries);
}

// The start of the library reads a small dictionary and its parameters.
inline Script startsParameters() {
  return readsDictionary(8, {{0, 4, 0}, {1, 4, 4}}) + reads(0, kArea, Bytes(8));
}
