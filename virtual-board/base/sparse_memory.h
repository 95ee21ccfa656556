// A 32-bit address space that stores only what was written.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>

namespace gfast::board {

class SparseMemory {
 public:
  static constexpr uint32_t kPageSize = 4096;
  static constexpr size_t kMaxPages = 4096;  // 16 MiB

  // False: the bytes need more than kMaxPages pages or reach past the end of the address space. Nothing is
  // written then.
  bool write(uint32_t address, std::span<const uint8_t> bytes);

  // Copies the bytes that were written into `out`. The other bytes of `out` keep their values.
  void copyOver(uint32_t address, std::span<uint8_t> out) const;

  // Replaces the bytes that were written before. The others stay unwritten.
  void update(uint32_t address, std::span<const uint8_t> bytes);

  // The bytes are unwritten again.
  void forget(uint32_t address, size_t length);

 private:
  struct Page {
    std::array<uint8_t, kPageSize> bytes{};
    std::bitset<kPageSize> written;
  };
  const Page* find(uint32_t address) const;
  Page* find(uint32_t address);

  std::map<uint32_t, std::unique_ptr<Page>> pages_;  // by address / kPageSize
};

// Whether `length` bytes from `address` lie within 32 bits.
constexpr bool inAddressSpace(uint32_t address, size_t length) {
  return length <= uint64_t{0x100000000} - address;
}

}  // namespace gfast::board
