#include "virtual-board/base/errno_names.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace gfast::board {

namespace {

struct Name {
  const char* name;
  int error;
};

#define NAME(error) \
  { #error, error }
constexpr Name kNames[] = {
    NAME(EPERM),     NAME(ENOENT),       NAME(EINTR),      NAME(EIO),      NAME(ENXIO),     NAME(E2BIG),
    NAME(ENOEXEC),   NAME(EBADF),        NAME(EAGAIN),     NAME(ENOMEM),   NAME(EACCES),    NAME(EFAULT),
    NAME(EBUSY),     NAME(EEXIST),       NAME(ENODEV),     NAME(EISDIR),   NAME(EINVAL),    NAME(ENFILE),
    NAME(EMFILE),    NAME(ENOTTY),       NAME(EFBIG),      NAME(ENOSPC),   NAME(EROFS),     NAME(EPIPE),
    NAME(ERANGE),    NAME(ENAMETOOLONG), NAME(ENOSYS),     NAME(ENODATA),  NAME(ETIME),     NAME(EPROTO),
    NAME(EBADMSG),   NAME(EMSGSIZE),     NAME(EOPNOTSUPP), NAME(ENOTCONN), NAME(ETIMEDOUT), NAME(ECONNRESET),
    NAME(EREMOTEIO), NAME(ENOTDIR),      NAME(ELOOP),      NAME(ENOBUFS),
};
#undef NAME

}  // namespace

std::optional<int> errnoByName(std::string_view name) {
  const auto* found =
      std::find_if(std::begin(kNames), std::end(kNames), [name](const Name& n) { return n.name == name; });
  return found == std::end(kNames) ? std::nullopt : std::optional(found->error);
}

std::string errnoName(int error) {
  const auto* found =
      std::find_if(std::begin(kNames), std::end(kNames), [error](const Name& n) { return n.error == error; });
  return found == std::end(kNames) ? std::to_string(error) : found->name;
}

}  // namespace gfast::board
