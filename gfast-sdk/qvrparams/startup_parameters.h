// The library's copy of the startup-parameters area, with values in the chip's byte order. Several threads
// may read and write parameters: one lock guards the bytes, and it is never held across a driver request.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace gfast {

class StartupParameters {
 public:
  void allocate(size_t size) { bytes_.resize(size); }  // before another thread can use it
  size_t size() const { return bytes_.size(); }

  // A range lies inside the area: the dictionary has no entries that leave it.
  std::vector<uint8_t> range(size_t offset, size_t length) const;
  void store(size_t offset, const std::vector<uint8_t>& bytes);

  // Stores the bytes. Returns false if they were there already.
  bool replace(size_t offset, const std::vector<uint8_t>& bytes);

 private:
  mutable std::mutex mutex_;
  std::vector<uint8_t> bytes_;
};

}  // namespace gfast
