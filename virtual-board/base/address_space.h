// A chip's 32-bit memory as the host sees it. Areas are computed when they are read and may act when they are
// written, all other bytes are stored, and the bytes of a board file (the overlay) hide both.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "virtual-board/base/sparse_memory.h"

namespace gfast::board {

using Bytes = std::vector<uint8_t>;

// Memory that the chip computes. `read` returns and `written` gets the whole area, even when the host reads
// or writes a part of it.
struct Area {
  uint32_t address;
  uint32_t length;
  std::function<Bytes()> read;
  std::function<void(const Bytes&)> written;  // empty: writes have no effect
  std::function<void(uint32_t offset, uint32_t length)>
      taken;  // called after a read of that part; may be empty
  // In place of `read`, for an area that is not written: returns a part of it.
  std::function<Bytes(uint32_t offset, uint32_t length)> part = {};
  // `part` answers every read that begins in the area, whatever its length; a read that begins before the
  // area does not see it.
  bool window = false;
};

class AddressSpace {
 public:
  void add(Area area) { areas_.push_back(std::move(area)); }

  void read(uint32_t address, std::span<uint8_t> out);

  // 0, or ENOMEM when the chip's memory is full (SparseMemory::kMaxPages).
  int write(uint32_t address, std::span<const uint8_t> bytes);

  // Forgets the stored bytes. Areas and overlay stay.
  void forgetStored() { stored_ = {}; }

  // The bytes of a board file. Writes of the host change them.
  SparseMemory& overlay() { return overlay_; }

 private:
  // Reads a window. False: the read does not begin in one.
  bool readWindow(uint32_t address, std::span<uint8_t> out) const;

  std::vector<Area> areas_;
  SparseMemory stored_;
  SparseMemory overlay_;
};

}  // namespace gfast::board
