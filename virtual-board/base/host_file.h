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

// The file whose name stands in the field, up to its first zero byte. ENAMETOOLONG: the name is not
// terminated; ENODATA: the file is empty; EFBIG: it is larger than `limit`; EISDIR, EINVAL: not a file;
// otherwise why the system did not open or read it.
HostFile readHostFile(std::span<const char> nameField, size_t limit);

}  // namespace gfast::board
