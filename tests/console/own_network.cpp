// When the environment puts another program in gfast-lab's place, that program listens on one port only. Each
// case, a process of its own, then gets a network of its own, so that many run at the same time. Where the
// system does not allow that, they share the machine's, and the build runs them one after the other.
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void writeFile(const char* name, const std::string& text) {
  if (std::FILE* const file = std::fopen(name, "w"); file != nullptr) {
    std::fputs(text.c_str(), file);
    std::fclose(file);
  }
}

// The right to make a network comes with being root, here or among users of one's own.
bool leaveNetwork() {
  if (unshare(CLONE_NEWNET) == 0) {
    return true;
  }
  const std::string user = std::to_string(getuid());
  const std::string group = std::to_string(getgid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
    return false;
  }
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", user + " " + user + " 1");
  writeFile("/proc/self/gid_map", group + " " + group + " 1");
  return true;
}

void raiseLoopback() {
  ifreq loopback{};
  std::strcpy(loopback.ifr_name, "lo");
  const int any = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ioctl(any, SIOCGIFFLAGS, &loopback);
  loopback.ifr_flags = static_cast<short>(loopback.ifr_flags | IFF_UP);
  ioctl(any, SIOCSIFFLAGS, &loopback);
  close(any);
}

// Before any test, and before the test starts a program.
[[maybe_unused]] const bool ownNetwork = [] {
  const bool left = std::getenv("GFAST_LAB") != nullptr && leaveNetwork();
  if (left) {
    raiseLoopback();
  }
  return left;
}();

}  // namespace
