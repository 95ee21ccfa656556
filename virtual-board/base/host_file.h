// Image files on the host, read as the driver reads them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace gfast::board {

struct HostFile {
  int error = 0;  // 0, or the errno that kept the file from being read
  std::vector<uint8_t> bytes;
};

// Reads the file whose name stands in the field, up to the name's first zero byte. Errors:
//   ENAMETOOLONG  the name has no zero byte
//   ENODATA       the file is empty
//   EFBIG         it is larger than `limit` bytes
//   EISDIR        it is a folder
//   EINVAL        it is neither file nor folder
//   others        the system's, from opening or reading it
HostFile readHostFile(std::span<const char> nameField, size_t limit);

}  // namespace gfast::board
