// The library's copy of the startup-parameters area: values in the chip's byte order. Reading and writing of
// parameters and whatever runs on the notification thread may meet here; one lock guards the bytes, and never
// across a driver request.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace gfast {

class StartupParameters {
 public:
  void allocate(size_t size) { bytes_.resize(size); }  // before anyone else knows of it
  size_t size() const { return bytes_.size(); }

  // Ranges lie inside the area: entries of the dictionary that leave it are not taken.
  std::vector<uint8_t> range(size_t offset, size_t length) const;
  void store(size_t offset, const std::vector<uint8_t>& bytes);

  // Stores the bytes; false when they were there already.
  bool replace(size_t offset, const std::vector<uint8_t>& bytes);

 private:
  mutable std::mutex mutex_;
  std::vector<uint8_t> bytes_;
};

}  // namespace gfast
