// What the tests of the line layer share: lines in the table without a start, chips in showtime, blocks of
// words, and exchanges with a far end.
#pragma once

#include <algorithm>
#include <cstring>

#include "qvrline/line_table.h"
#include "std/byte_order.h"
#include "unit/sdk/seams.h"

using namespace gfast;

inline ChipIdentity chipWithLine(G9701_linkState_t state) {
  ChipIdentity chip;
  chip.setLinkState(state);
  return chip;
}

// Each device carries one line, as the table is built when both answer.
inline void enterBothLines() {
  addLine(0, 0, 0, TRUE);
  addLine(1, 1, 0, FALSE);
}

// The device is open, and its record says that its line is in this state.
inline void startDevice(ExpectedRequests& driver, QVR_deviceId_t device, G9701_linkState_t state) {
  driver.expect(opens(device) + readsIdentity(device, chipWithLine(state)));
  ASSERT_EQ(QVR_getDeviceInfo(device, nullptr), QVR_E_STATUS_OK);
}

// Chip bytes of which word i, little-endian, is first + i.
inline Bytes countingWords(size_t size, uint32_t first) {
  Bytes bytes(size);
  for (uint32_t i = 0; i < size / 4; i++) {
    store_le32(&bytes[size_t{i} * 4], first + i);
  }
  return bytes;
}

// Word i of a record made of words.
template <typename Record>
uint32_t wordOf(const Record& record, size_t i) {
  static_assert(sizeof(Record) % 4 == 0);
  uint32_t word = 0;
  std::memcpy(&word, reinterpret_cast<const char*>(&record) + i * 4, sizeof word);
  return word;
}

// The record's words count up from this one.
template <typename Record>
void expectCountingWords(const Record& record, uint32_t first) {
  for (uint32_t i = 0; i < sizeof(Record) / 4; i++) {
    EXPECT_EQ(wordOf(record, i), first + i) << "word " << i;
  }
}

template <typename Record>
bool isZero(const Record& record) {
  const auto* bytes = reinterpret_cast<const char*>(&record);
  return std::all_of(bytes, bytes + sizeof record, [](char byte) { return byte == 0; });
}

// Memory of the far end: the request's header and the answer's. Every process numbers its exchanges from 1.
// Not inlined, because GCC 12 then takes what is appended to the twelve bytes for written past their end.
[[gnu::noinline]] inline Bytes farEndHeader(uint16_t opcode, size_t length, uint16_t sequence,
                                            uint32_t address) {
  Bytes header(12);
  store_le16(header.data(), opcode);
  store_le16(&header[2], static_cast<uint16_t>(length));
  store_le16(&header[4], sequence);
  store_le32(&header[8], address);
  return header;
}

inline Bytes readRequest(uint16_t sequence, uint32_t address, size_t length) {
  return farEndHeader(2, length, sequence, address);
}

inline Bytes readAnswer(uint16_t sequence, uint32_t address, const Bytes& data) {
  Bytes answer = farEndHeader(0x8002, data.size(), sequence, address);
  answer.insert(answer.end(), data.begin(), data.end());
  return answer;
}

// One exchange, whatever the answer.
inline Script asksFarEndMemory(int device, uint16_t sequence, uint32_t address, size_t length,
                               const Bytes& answer) {
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_READMEM, readRequest(sequence, address, length),
                       static_cast<uint32_t>(12 + length), answer);
}

inline Script readsFarEnd(int device, uint16_t sequence, uint32_t address, const Bytes& data) {
  return asksFarEndMemory(device, sequence, address, data.size(), readAnswer(sequence, address, data));
}
