// A chip's 32-bit memory, seen from the host: areas that the chip computes when they are read, registers that
// act when they are written, stored bytes everywhere else, and over all of it what a board file laid there.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "virtual-board/base/sparse_memory.h"

namespace gfast::board {

using Bytes = std::vector<uint8_t>;

// A stretch of memory that the chip makes up. Partial reads and writes are taken care of: `read` and
// `written` deal in the whole area.
struct Area {
  uint32_t address;
  uint32_t length;
  std::function<Bytes()> read;
  std::function<void(const Bytes&)> written;                    // none: what is written has no effect
  std::function<void(uint32_t offset, uint32_t length)> taken;  // after a read of that part; none: nothing
  // In place of `read`: only so many bytes from there. Such an area is not written.
  std::function<Bytes(uint32_t offset, uint32_t length)> part = {};
  // Every read that begins in the area is a look of its own, which it answers alone and however long it is.
  bool window = false;
};

class AddressSpace {
 public:
  void add(Area area) { areas_.push_back(std::move(area)); }

  // The bytes as the host sees them now.
  void read(uint32_t address, std::span<uint8_t> out);

  // 0, or ENOMEM when the chip's memory is full (SparseMemory::kMaxPages).
  int write(uint32_t address, std::span<const uint8_t> bytes);

  // The stored bytes are lost; areas and the overlay stay.
  void forgetStored() { stored_ = {}; }

  // What a board file lays over everything else. A later write changes it, as it changes memory.
  SparseMemory& overlay() { return overlay_; }

 private:
  // Through a window, if the read begins in one.
  bool look(uint32_t address, std::span<uint8_t> out) const;

  std::vector<Area> areas_;
  SparseMemory stored_;
  SparseMemory overlay_;
};

}  // namespace gfast::board
