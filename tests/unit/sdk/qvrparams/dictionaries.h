// What the tests of the parameters share: dictionaries in chip memory, and the requests that load them.
#pragma once

#include <initializer_list>

#include "chip/parameters.h"
#include "unit/sdk/lines.h"

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

inline Bytes words(std::initializer_list<uint32_t> values) {
  Bytes bytes;
  for (const uint32_t value : values) {
    for (int bit = 0; bit < 32; bit += 8) {
      bytes.push_back(static_cast<uint8_t>(value >> bit));
    }
  }
  return bytes;
}

inline Bytes entryWords(const std::vector<Entry>& entries) {
  Bytes bytes;
  for (const Entry& entry : entries) {
    const Bytes word =
        words({entry.id | entry.length << 10 | entry.offset << 19 | entry.state << 30 | entry.type << 31});
    bytes.insert(bytes.end(), word.begin(), word.end());
  }
  return bytes;
}

inline Script readsHeader(uint32_t address, uint32_t paramsSize, uint32_t dictionarySize) {
  return reads(0, VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY,
               words({address, paramsSize, dictionarySize}));
}

// Reads of any number of bytes, in pieces that the driver accepts.
inline Script readsInPieces(int device, uint32_t address, const Bytes& bytes) {
  Script script;
  for (size_t at = 0; at < bytes.size(); at += 900) {
    const size_t end = std::min<size_t>(at + 900, bytes.size());
    script =
        script + reads(device, address + static_cast<uint32_t>(at),
                       Bytes(bytes.begin() + static_cast<long>(at), bytes.begin() + static_cast<long>(end)));
  }
  return script;
}

inline Script readsDictionary(uint32_t paramsSize, const std::vector<Entry>& entries) {
  const Bytes list = entryWords(entries);
  return readsHeader(kArea, paramsSize, static_cast<uint32_t>(list.size())) +
         readsInPieces(0, kEntries, list);
}

// The requests with which the library reads a small dictionary and its parameters at its start.
inline Script startsParameters() {
  return readsDictionary(8, {{0, 4, 0}, {1, 4, 4}}) + reads(0, kArea, Bytes(8));
}

// Both devices carry a line and are open; no dictionary has been read.
class Parameters : public testing::Test {
 protected:
  Parameters() {
    enterBothLines();
    openDevice(driver_, 0);
    openDevice(driver_, 1);
  }

  void load(uint32_t paramsSize, const std::vector<Entry>& entries) {
    driver_.expect(readsDictionary(paramsSize, entries));
    ASSERT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
    driver_.verify();
  }

  ExpectedRequests driver_{Script()};
};

inline auto id(uint32_t number) {
  return static_cast<eConstParams>(number);
}
