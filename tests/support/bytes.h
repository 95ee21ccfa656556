// Bytes as a chip has them: numbers little-endian, texts in fields.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "std/byte_order.h"

using Bytes = std::vector<uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline void append16(Bytes& bytes, uint32_t value) {
  bytes.push_back(static_cast<uint8_t>(value));
  bytes.push_back(static_cast<uint8_t>(value >> 8));
}

inline void append32(Bytes& bytes, uint32_t value) {
  append16(bytes, value);
  append16(bytes, value >> 16);
}

// Values of 16 bits.
inline Bytes littleEndian16(const std::vector<int>& values) {
  Bytes bytes;
  for (const int value : values) {
    append16(bytes, static_cast<uint32_t>(value));
  }
  return bytes;
}

// Values of 32 bits.
inline Bytes words(const std::vector<uint32_t>& values) {
  Bytes bytes;
  for (const uint32_t value : values) {
    append32(bytes, value);
  }
  return bytes;
}

// Words of which word i is first + i.
inline Bytes countingWords(size_t size, uint32_t first) {
  Bytes bytes;
  for (uint32_t i = 0; i < size / 4; i++) {
    append32(bytes, first + i);
  }
  return bytes;
}

// Text in a field of bytes, zeros behind it.
inline Bytes field(const std::string& text, size_t size) {
  Bytes bytes(text.begin(), text.end());
  bytes.resize(size);
  return bytes;
}
