#include "virtual-board/base/sparse_memory.h"

#include <algorithm>

namespace gfast::board {

const SparseMemory::Page* SparseMemory::find(uint32_t address) const {
  const auto page = pages_.find(address / kPageSize);
  return page == pages_.end() ? nullptr : page->second.get();
}

SparseMemory::Page* SparseMemory::find(uint32_t address) {
  const auto page = pages_.find(address / kPageSize);
  return page == pages_.end() ? nullptr : page->second.get();
}

bool SparseMemory::write(uint32_t address, std::span<const uint8_t> bytes) {
  if (!inAddressSpace(address, bytes.size())) {
    return false;
  }
  if (bytes.empty()) {
    return true;
  }
  const uint32_t first = address / kPageSize;
  const auto last = static_cast<uint32_t>((address + bytes.size() - 1) / kPageSize);
  size_t missing = 0;
  for (uint32_t page = first; page <= last; page++) {
    missing += pages_.contains(page) ? 0 : 1;
  }
  if (pages_.size() + missing > kMaxPages) {
    return false;
  }
  for (uint32_t page = first; page <= last; page++) {
    if (auto& place = pages_[page]; !place) {
      place = std::make_unique<Page>();
    }
  }
  for (const uint8_t byte : bytes) {
    Page& page = *find(address);
    page.bytes[address % kPageSize] = byte;
    page.written.set(address % kPageSize);
    address++;
  }
  return true;
}

void SparseMemory::copyOver(uint32_t address, std::span<uint8_t> out) const {
  while (!out.empty()) {
    const uint32_t first = address % kPageSize;
    const auto count = static_cast<uint32_t>(std::min<size_t>(out.size(), kPageSize - first));
    if (const Page* page = find(address); page != nullptr) {
      for (uint32_t i = 0; i < count; i++) {
        out[i] = page->written.test(first + i) ? page->bytes[first + i] : out[i];
      }
    }
    out = out.subspan(count);
    address += count;
  }
}

void SparseMemory::update(uint32_t address, std::span<const uint8_t> bytes) {
  for (const uint8_t byte : bytes) {
    Page* page = find(address);
    if (page != nullptr && page->written.test(address % kPageSize)) {
      page->bytes[address % kPageSize] = byte;
    }
    address++;
  }
}

void SparseMemory::forget(uint32_t address, size_t length) {
  for (size_t i = 0; i < length; i++, address++) {
    if (Page* page = find(address); page != nullptr) {
      page->written.reset(address % kPageSize);
    }
  }
}

}  // namespace gfast::board
