#include "virtual-board/base/address_space.h"

#include <algorithm>
#include <cerrno>

namespace gfast::board {

namespace {

struct Overlap {
  uint32_t inArea;
  size_t inRange;
  uint32_t length;
};

Overlap overlap(const Area& area, uint32_t address, size_t length) {
  const uint64_t begin = std::max<uint64_t>(area.address, address);
  const uint64_t end = std::min<uint64_t>(uint64_t{area.address} + area.length, uint64_t{address} + length);
  if (begin >= end) {
    return {0, 0, 0};
  }
  return {static_cast<uint32_t>(begin - area.address), static_cast<size_t>(begin - address),
          static_cast<uint32_t>(end - begin)};
}

}  // namespace

bool AddressSpace::readWindow(uint32_t address, std::span<uint8_t> out) const {
  const auto found = std::find_if(areas_.begin(), areas_.end(), [address](const Area& area) {
    return area.window && address >= area.address && address - area.address < area.length;
  });
  if (found == areas_.end()) {
    return false;
  }
  const Bytes seen = found->part(address - found->address, static_cast<uint32_t>(out.size()));
  std::copy(seen.begin(), seen.end(), out.begin());
  return true;
}

void AddressSpace::read(uint32_t address, std::span<uint8_t> out) {
  if (readWindow(address, out)) {
    overlay_.copyOver(address, out);
    return;
  }
  std::fill(out.begin(), out.end(), uint8_t{0});
  stored_.copyOver(address, out);
  for (const Area& area : areas_) {
    const Overlap part = overlap(area, address, out.size());
    if (part.length == 0 || area.window) {
      continue;
    }
    const Bytes bytes = area.part ? area.part(part.inArea, part.length) : area.read();
    std::copy_n(bytes.begin() + (area.part ? 0 : part.inArea), part.length,
                out.begin() + static_cast<long>(part.inRange));
    if (area.taken) {
      area.taken(part.inArea, part.length);
    }
  }
  overlay_.copyOver(address, out);
}

int AddressSpace::write(uint32_t address, std::span<const uint8_t> bytes) {
  if (!stored_.write(address, bytes)) {
    return ENOMEM;
  }
  overlay_.update(address, bytes);
  for (const Area& area : areas_) {
    const Overlap part = overlap(area, address, bytes.size());
    if (part.length == 0 || !area.written) {
      continue;
    }
    Bytes whole = area.read();
    std::copy_n(bytes.begin() + static_cast<long>(part.inRange), part.length, whole.begin() + part.inArea);
    area.written(whole);
  }
  return 0;
}

}  // namespace gfast::board
