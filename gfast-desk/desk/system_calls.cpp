#include "gfast-desk/desk/system_calls.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "device-files/carried_request.h"
#include "device-files/device_names.h"
#include "gfast-desk/desk/other_process.h"
#include "gfast-desk/desk/system_call_filter.h"

namespace gfast::desk {

namespace {

constexpr size_t kWorkers = 4;
constexpr size_t kLongestPath = 63;  // longer than any that is ours

pid_t threadOf(const seccomp_notif& call) {
  return static_cast<pid_t>(call.pid);
}

// What open refuses before it looks at what the driver thinks of the flags.
int refusalOfOpen(int flags) {
  if ((flags & O_DIRECTORY) != 0) {
    return ENOTDIR;
  }
  return (flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL) ? EEXIST : 0;
}

}  // namespace

SystemCalls::SystemCalls(OpenFiles& files, int listener) : files_(files), listener_(listener) {
  seccomp_notif_sizes sizes{};
  ::syscall(SYS_seccomp, SECCOMP_GET_NOTIF_SIZES, 0, &sizes);
  messageSize_ = std::max<size_t>(sizes.seccomp_notif, sizeof(seccomp_notif));
  for (size_t i = 0; i < kWorkers; i++) {
    workers_.emplace_back([this] { work(); });
  }
}

SystemCalls::~SystemCalls() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  for (std::thread& worker : workers_) {
    worker.join();
  }
}

void SystemCalls::receive() {
  std::vector<char> message(messageSize_);
  // It fails when the caller has been killed meanwhile.
  if (::ioctl(listener_, SECCOMP_IOCTL_NOTIF_RECV, message.data()) != 0) {
    return;
  }
  seccomp_notif call;
  std::memcpy(&call, message.data(), sizeof call);
  {
    const std::lock_guard lock(mutex_);
    waiting_.push(call);
  }
  changed_.notify_one();
}

void SystemCalls::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
    if (ending_) {
      return;
    }
    const seccomp_notif call = waiting_.front();
    waiting_.pop();
    lock.unlock();
    serve(call);
    lock.lock();
  }
}

void SystemCalls::serve(const seccomp_notif& call) {
  files_.settle();
  const Reply reply = replyTo(call);
  if (reply.kind == Reply::Kind::kSent) {
    return;
  }
  seccomp_notif_resp response{};
  response.id = call.id;
  if (reply.kind == Reply::Kind::kNotOurs) {
    response.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
  } else if (reply.result < 0) {
    response.error = reply.result;
  } else {
    response.val = reply.result;
  }
  // It fails when the caller has been killed meanwhile.
  ::ioctl(listener_, SECCOMP_IOCTL_NOTIF_SEND, &response);
}

SystemCalls::Reply SystemCalls::replyTo(const seccomp_notif& call) {
  const auto* const arguments = call.data.args;
  const auto flagsAt = [arguments](size_t index) { return static_cast<int>(arguments[index]); };
  switch (callOf(call.data)) {
    case Call::kOpen:
      return open(call, arguments[0], flagsAt(1));
    case Call::kOpenAt:
      return open(call, arguments[1], flagsAt(2));
    case Call::kOpenAt2: {
      open_how how{};
      return read(call, arguments[2], &how.flags, sizeof how.flags)
                 ? open(call, arguments[1], static_cast<int>(how.flags))
                 : Reply();
    }
    case Call::kCreate:
      return open(call, arguments[0], O_CREAT | O_WRONLY | O_TRUNC);
    case Call::kIoctl:
      return ioctl(call);
    case Call::kForeign:
      return endForeigner(call);
  }
  return {};
}

SystemCalls::Reply SystemCalls::open(const seccomp_notif& call, uint64_t path, int flags) {
  const auto name = readText(threadOf(call), path, kLongestPath);
  if (!name || !waits(call) || (flags & O_PATH) != 0) {
    return {};
  }
  const auto device = device_files::deviceOfPath(*name);
  if (!device && *name != device_files::kRediscoverFile) {
    return {};
  }
  if (const int refusal = refusalOfOpen(flags); refusal != 0) {
    return {Reply::Kind::kResult, -refusal};
  }
  if (!device) {
    return (flags & O_ACCMODE) == O_RDONLY ? Reply{Reply::Kind::kResult, -EACCES}
                                           : give(call, files_.openRediscovery(), flags);
  }
  const int refusal = device_files::refusalOfDeviceOpen(flags);
  return refusal != 0 ? Reply{Reply::Kind::kResult, -refusal}
                      : give(call, files_.openDevice(*device, flags), flags);
}

// The program gets a descriptor of its own, and with it the answer to its call.
SystemCalls::Reply SystemCalls::give(const seccomp_notif& call, Descriptor file, int flags) {
  if (!file) {
    return {Reply::Kind::kResult, -errno};
  }
  seccomp_notif_addfd gift{};
  gift.id = call.id;
  gift.flags = SECCOMP_ADDFD_FLAG_SEND;
  gift.srcfd = static_cast<uint32_t>(file.number());
  gift.newfd_flags = static_cast<uint32_t>(flags & O_CLOEXEC);
  const auto hold = files_.holdSettling();
  const int error = ::ioctl(listener_, SECCOMP_IOCTL_NOTIF_ADDFD, &gift) < 0 ? errno : 0;
  file = Descriptor();
  // It may hold as many as it is allowed to; or it has been killed, and nobody reads this.
  return error != 0 ? Reply{Reply::Kind::kResult, -error} : Reply{Reply::Kind::kSent, 0};
}

SystemCalls::Reply SystemCalls::ioctl(const seccomp_notif& call) {
  const auto file = fileBehind(threadOf(call), static_cast<int>(call.data.args[0]));
  const auto device = file && waits(call) ? files_.find(*file) : nullptr;
  if (!device) {
    return {};
  }
  const Reply reply{Reply::Kind::kResult, carry(call, *device)};
  files_.showReadiness();
  return reply;
}

int SystemCalls::carry(const seccomp_notif& call, OpenDevice& device) {
  const auto code = static_cast<uint32_t>(call.data.args[1]);
  const uint64_t address = call.data.args[2];
  gfast_iocreq envelope;
  if (!read(call, address, &envelope, sizeof envelope)) {
    return -EFAULT;
  }
  device_files::CarriedRequest request(code, envelope);
  if (request.tooLarge()) {
    return -EINVAL;
  }
  const auto sent = request.sent();
  if (!read(call, request.address(), sent.data(), sent.size())) {
    return -EFAULT;
  }
  const int result = device.request(code, request.served());
  const auto returned = request.returned();
  if (result == 0 && !write(call, request.address(), returned.data(), returned.size())) {
    return -EFAULT;
  }
  return write(call, address, &request.answer(), sizeof envelope) ? result : -EFAULT;
}

SystemCalls::Reply SystemCalls::endForeigner(const seccomp_notif& call) {
  const pid_t process = threadOf(call);
  const std::string program = programOf(process);
  if (waits(call)) {
    foreigner_ = process;
    std::fprintf(stderr, "gfast-desk: %s: not a program with 64-bit pointers for this processor\n",
                 program.c_str());
    ::kill(process, SIGKILL);
  }
  return {};
}

bool SystemCalls::waits(const seccomp_notif& call) const {
  return ::ioctl(listener_, SECCOMP_IOCTL_NOTIF_ID_VALID, &call.id) == 0;
}

bool SystemCalls::read(const seccomp_notif& call, uint64_t address, void* bytes, size_t length) const {
  return length == 0 || (waits(call) && readMemory(threadOf(call), address, bytes, length) && waits(call));
}

bool SystemCalls::write(const seccomp_notif& call, uint64_t address, const void* bytes, size_t length) const {
  return length == 0 || (waits(call) && writeMemory(threadOf(call), address, bytes, length) && waits(call));
}

}  // namespace gfast::desk
