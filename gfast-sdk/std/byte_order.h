// Byte order, in one place: chip memory, events, log records, images and far-end messages are little-endian.
//
// The board's processor is big-endian and swaps every chip word it has loaded; swapl and swaps therefore
// always reverse, on every machine. Code that must give the same answer everywhere reads words from bytes:
// load_le32 is the board's "load, then swapl"; load_be32 is a word that the board uses as loaded.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gfast {

constexpr uint32_t swapl(uint32_t v) {
  return (v >> 24) | ((v >> 8) & 0x0000FF00U) | ((v << 8) & 0x00FF0000U) | (v << 24);
}

constexpr uint16_t swaps(uint16_t v) {
  return static_cast<uint16_t>((v >> 8) | (v << 8));
}

#define QVRNTOHL(v) swapl(v)
#define QVRHTONL(v) swapl(v)
#define QVRNTOHS(v) swaps(v)
#define QVRHTONS(v) swaps(v)

inline uint16_t load_le16(const void* from) {
  const auto* p = static_cast<const uint8_t*>(from);
  return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

inline uint32_t load_le32(const void* from) {
  const auto* p = static_cast<const uint8_t*>(from);
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
         (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

inline uint16_t load_be16(const void* from) {
  return swaps(load_le16(from));
}

inline uint32_t load_be32(const void* from) {
  return swapl(load_le32(from));
}

inline void store_le16(void* to, uint16_t v) {
  auto* p = static_cast<uint8_t*>(to);
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
}

inline void store_le32(void* to, uint32_t v) {
  auto* p = static_cast<uint8_t*>(to);
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
  p[2] = static_cast<uint8_t>(v >> 16);
  p[3] = static_cast<uint8_t>(v >> 24);
}

inline void store_be32(void* to, uint32_t v) {
  store_le32(to, swapl(v));
}

}  // namespace gfast
