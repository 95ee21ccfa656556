#include "gfast-desk/desk/system_call_filter.h"

#include <gfast_api.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <vector>

namespace gfast::desk {

namespace {

struct ShownCall {
  uint32_t number;
  Call call;
};

#if defined(__x86_64__)
constexpr uint32_t kArchitecture = AUDIT_ARCH_X86_64;
// Programs with 32-bit pointers call the same kernel entry with this bit set.
constexpr uint32_t kShortPointersBit = 0x40000000;
constexpr ShownCall kOpens[] = {{SYS_openat, Call::kOpenAt},
                                {SYS_openat2, Call::kOpenAt2},
                                {SYS_open, Call::kOpen},
                                {SYS_creat, Call::kCreate}};
#elif defined(__aarch64__)
constexpr uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
constexpr uint32_t kShortPointersBit = 0;
constexpr ShownCall kOpens[] = {{SYS_openat, Call::kOpenAt}, {SYS_openat2, Call::kOpenAt2}};
#endif

// A code of the driver's but for its number.
constexpr uint32_t kDriverCodes = DFEIOC_REQUEST_CODE(0U);
constexpr uint32_t kNumberBits = 0xFF;

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "an argument's low half is its first");

using Filter = std::vector<sock_filter>;

sock_filter load(size_t offset) {
  return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<uint32_t>(offset));
}

sock_filter skipUnless(uint16_t condition, uint32_t value, uint8_t skipped) {
  return BPF_JUMP(static_cast<uint16_t>(BPF_JMP | condition | BPF_K), value, 0, skipped);
}

sock_filter answer(uint32_t action) {
  return BPF_STMT(BPF_RET | BPF_K, action);
}

// Shows the call if the condition holds for what is loaded, and goes on otherwise.
void showIf(Filter& filter, uint16_t condition, uint32_t value) {
  filter.push_back(skipUnless(condition, value, 1));
  filter.push_back(answer(SECCOMP_RET_USER_NOTIF));
}

Filter makeFilter() {
  Filter filter;
  filter.push_back(load(offsetof(seccomp_data, arch)));
  filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0));
  filter.push_back(answer(SECCOMP_RET_USER_NOTIF));
  filter.push_back(load(offsetof(seccomp_data, nr)));
  if (kShortPointersBit != 0) {
    showIf(filter, BPF_JSET, kShortPointersBit);
  }
  for (const ShownCall& open : kOpens) {
    showIf(filter, BPF_JEQ, open.number);
  }
  constexpr uint8_t restOfIoctl = 4;
  filter.push_back(skipUnless(BPF_JEQ, SYS_ioctl, restOfIoctl));
  filter.push_back(load(offsetof(seccomp_data, args[1])));
  filter.push_back(BPF_STMT(BPF_ALU | BPF_AND | BPF_K, ~kNumberBits));
  showIf(filter, BPF_JEQ, kDriverCodes);
  filter.push_back(answer(SECCOMP_RET_ALLOW));
  return filter;
}

}  // namespace

Call callOf(const seccomp_data& call) {
  const auto number = static_cast<uint32_t>(call.nr);
  if (call.arch != kArchitecture || (number & kShortPointersBit) != 0) {
    return Call::kForeign;
  }
  for (const ShownCall& open : kOpens) {
    if (open.number == number) {
      return open.call;
    }
  }
  return Call::kIoctl;
}

int installFilter() {
  Filter filter = makeFilter();
  const sock_fprog program{static_cast<uint16_t>(filter.size()), filter.data()};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
    return -1;
  }
  const auto install = [&program](unsigned int flags) {
    return static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program));
  };
  // A signal that a program catches must not make it ask again for what was answered: an event would be lost.
  // Kernels before 5.19 do not know how to wait.
  constexpr unsigned int waits = SECCOMP_FILTER_FLAG_NEW_LISTENER | SECCOMP_FILTER_FLAG_WAIT_KILLABLE_RECV;
  const int listener = install(waits);
  return listener < 0 && errno == EINVAL ? install(SECCOMP_FILTER_FLAG_NEW_LISTENER) : listener;
}

}  // namespace gfast::desk
