// Error numbers by the names that board files and traces use: the numbers differ between processors.
#pragma once

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace gfast {

struct ErrnoName {
  std::string_view name;
  int error;
};

#define NAME(error) \
  { #error, error }
constexpr ErrnoName kErrnoNames[] = {
    NAME(EPERM),     NAME(ENOENT),       NAME(EINTR),      NAME(EIO),      NAME(ENXIO),     NAME(E2BIG),
    NAME(ENOEXEC),   NAME(EBADF),        NAME(EAGAIN),     NAME(ENOMEM),   NAME(EACCES),    NAME(EFAULT),
    NAME(EBUSY),     NAME(EEXIST),       NAME(ENODEV),     NAME(EISDIR),   NAME(EINVAL),    NAME(ENFILE),
    NAME(EMFILE),    NAME(ENOTTY),       NAME(EFBIG),      NAME(ENOSPC),   NAME(EROFS),     NAME(EPIPE),
    NAME(ERANGE),    NAME(ENAMETOOLONG), NAME(ENOSYS),     NAME(ENODATA),  NAME(ETIME),     NAME(EPROTO),
    NAME(EBADMSG),   NAME(EMSGSIZE),     NAME(EOPNOTSUPP), NAME(ENOTCONN), NAME(ETIMEDOUT), NAME(ECONNRESET),
    NAME(EREMOTEIO), NAME(ENOTDIR),      NAME(ELOOP),      NAME(ENOBUFS),
};
#undef NAME

// The number of a name such as "EIO"; empty for an unknown name.
inline std::optional<int> errnoByName(std::string_view name) {
  const auto* found = std::ranges::find(kErrnoNames, name, &ErrnoName::name);
  return found == std::end(kErrnoNames) ? std::nullopt : std::optional(found->error);
}

// The name of a number; its decimal digits when it has none here.
inline std::string errnoName(int error) {
  const auto* found = std::ranges::find(kErrnoNames, error, &ErrnoName::error);
  return found == std::end(kErrnoNames) ? std::to_string(error) : std::string(found->name);
}

}  // namespace gfast
