#include "gfast-cuse/cuse/cuse_device.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <thread>

#include "device-files/carried_request.h"
#include "device-files/device_names.h"

namespace gfast::cuse {

namespace {

constexpr size_t kThreads = 2;  // as many as the library has
constexpr uint32_t kNumberBits = 0xFF;

// Where in the program's memory a request's bytes are.
struct Areas {
  std::array<fuse_ioctl_iovec, 4> all{};
  uint32_t count = 0;

  void add(uint64_t address, uint64_t length) {
    if (length > 0) {
      all[count++] = {address, length};
    }
  }
  std::span<const char> bytes() const {
    return {reinterpret_cast<const char*>(all.data()), count * sizeof all[0]};
  }
};

}  // namespace

const CuseDevice::Opcode CuseDevice::kOpcodes[] = {
    {FUSE_OPEN, &CuseDevice::open},
    {FUSE_RELEASE, &CuseDevice::release},
    {FUSE_POLL, &CuseDevice::poll},
    {FUSE_IOCTL, &CuseDevice::ioctl},
    {FUSE_READ, &CuseDevice::refuseTransfer},
    {FUSE_WRITE, &CuseDevice::refuseTransfer},
    // Every request ends by itself soon, so there is nothing to interrupt.
    {FUSE_INTERRUPT, &CuseDevice::neverAnswered},
    {FUSE_FORGET, &CuseDevice::neverAnswered},
};

CuseDevice::CuseDevice(Driver& board, int device, int channel)
    : board_(board), device_(device), channel_(channel), watch_(channel_) {}

CuseDevice::~CuseDevice() {
  for (const int descriptor : open_) {
    watch_.forget(descriptor);
    board_.close(descriptor);
  }
}

std::string CuseDevice::introduce() {
  std::vector<char> buffer = Channel::roomForMessage();
  const auto message = channel_.receive(buffer);
  const auto kernel = message && message->opcode() == CUSE_INIT ? message->as<cuse_init_in>() : std::nullopt;
  if (!kernel) {
    return "the kernel did not begin as it should";
  }
  if (kernel->major != FUSE_KERNEL_VERSION || (kernel->flags & CUSE_UNRESTRICTED_IOCTL) == 0) {
    channel_.answer(message->unique(), -EPROTO);
    return "the kernel's protocol is another";
  }
  cuse_init_out out{};
  out.major = FUSE_KERNEL_VERSION;
  out.minor = FUSE_KERNEL_MINOR_VERSION;
  out.flags = CUSE_UNRESTRICTED_IOCTL;
  out.max_read = kMostTransfer;
  out.max_write = kMostTransfer;
  const std::string name =
      "DEVNAME=" + std::string(device_files::kDeviceName) + std::to_string(device_) + '\0';
  channel_.answer(message->unique(), 0, {bytesOf(out), {name.data(), name.size()}});
  return "";
}

void CuseDevice::serve() {
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreads; i++) {
    threads.emplace_back([this] { work(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

void CuseDevice::work() {
  std::vector<char> buffer = Channel::roomForMessage();
  while (const auto message = channel_.receive(buffer)) {
    handle(*message);
  }
}

void CuseDevice::handle(const Message& message) {
  const auto* const known =
      std::find_if(std::begin(kOpcodes), std::end(kOpcodes),
                   [&message](const Opcode& opcode) { return opcode.number == message.opcode(); });
  if (known == std::end(kOpcodes)) {
    channel_.answer(message.unique(), -ENOSYS);
    return;
  }
  (this->*known->handler)(message);
}

int CuseDevice::descriptorOf(uint64_t handle) {
  const std::lock_guard lock(mutex_);
  const bool known = handle <= INT32_MAX && open_.contains(static_cast<int>(handle));
  return known ? static_cast<int>(handle) : -1;
}

void CuseDevice::open(const Message& message) {
  const auto in = message.as<fuse_open_in>();
  const int refusal = in ? device_files::refusalOfDeviceOpen(static_cast<int>(in->flags)) : EINVAL;
  const int descriptor = refusal == 0 ? board_.open(device_) : -1;
  if (descriptor < 0) {
    channel_.answer(message.unique(), refusal != 0 ? -refusal : -errno);
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    open_.insert(descriptor);
  }
  fuse_open_out out{};
  out.fh = static_cast<uint64_t>(descriptor);
  channel_.answer(message.unique(), 0, {bytesOf(out)});
}

void CuseDevice::release(const Message& message) {
  const auto in = message.as<fuse_release_in>();
  const int descriptor = in ? descriptorOf(in->fh) : -1;
  if (descriptor >= 0) {
    watch_.forget(descriptor);
    {
      const std::lock_guard lock(mutex_);
      open_.erase(descriptor);
    }
    board_.close(descriptor);
  }
  channel_.answer(message.unique(), descriptor >= 0 ? 0 : -EBADF);
}

void CuseDevice::poll(const Message& message) {
  const auto in = message.as<fuse_poll_in>();
  const int descriptor = in ? descriptorOf(in->fh) : -1;
  if (descriptor < 0) {
    channel_.answer(message.unique(), -EBADF);
    return;
  }
  pollfd file{descriptor, POLLIN, 0};
  fuse_poll_out out{};
  out.revents = ::poll(&file, 1, 0) == 1 ? POLLIN | POLLRDNORM : 0;
  // While the kernel waits for the answer, nobody closes the file.
  if ((in->flags & FUSE_POLL_SCHEDULE_NOTIFY) != 0) {
    watch_.tellWhenReadable(descriptor, in->kh);
  }
  channel_.answer(message.unique(), 0, {bytesOf(out)});
}

void CuseDevice::ioctl(const Message& message) {
  const auto in = message.as<fuse_ioctl_in>();
  const std::span<const char> data = message.after<fuse_ioctl_in>();
  if (!in || data.size() < in->in_size) {
    channel_.answer(message.unique(), -EINVAL);
  } else if (descriptorOf(in->fh) < 0) {
    channel_.answer(message.unique(), -EBADF);
  } else if ((in->cmd & ~kNumberBits) != DFEIOC_REQUEST_CODE(0U) || (in->flags & FUSE_IOCTL_COMPAT) != 0) {
    // A program with shorter pointers than this one's has other envelopes.
    channel_.answer(message.unique(), -ENOTTY);
  } else {
    ioctl(message.unique(), *in, data.first(in->in_size));
  }
}

// The kernel knows nothing of envelopes and buffers: it is told where they are, first of the envelope and
// then, once that is here, of the buffer that it names, and asks again with their bytes.
void CuseDevice::ioctl(uint64_t unique, const fuse_ioctl_in& call, std::span<const char> data) {
  fuse_ioctl_out out{};
  const auto askAgain = [&](const Areas& areas, uint32_t inputs) {
    out.flags = FUSE_IOCTL_RETRY;
    out.in_iovs = inputs;
    out.out_iovs = areas.count - inputs;
    channel_.answer(unique, 0, {bytesOf(out), areas.bytes()});
  };
  gfast_iocreq envelope;
  Areas areas;
  areas.add(call.arg, sizeof envelope);
  if (call.in_size < sizeof envelope || call.out_size < sizeof envelope) {
    areas.add(call.arg, sizeof envelope);
    askAgain(areas, 1);
    return;
  }
  std::memcpy(&envelope, data.data(), sizeof envelope);
  device_files::CarriedRequest request(call.cmd, envelope);
  if (request.tooLarge()) {
    channel_.answer(unique, -EINVAL);
    return;
  }
  const std::span<char> sent = request.sent();
  if (call.in_size != sizeof envelope + sent.size() || call.out_size != sizeof envelope + request.room()) {
    areas.add(request.address(), sent.size());
    const uint32_t inputs = areas.count;
    areas.add(call.arg, sizeof envelope);
    areas.add(request.address(), request.room());
    askAgain(areas, inputs);
    return;
  }
  std::copy(data.begin() + sizeof envelope, data.end(), sent.begin());
  const int result = board_.request(static_cast<int>(call.fh), call.cmd, request.served());
  out.result = result < 0 ? -errno : 0;
  const auto returned = result < 0 ? std::span<const char>() : request.returned();
  channel_.answer(unique, 0, {bytesOf(out), bytesOf(request.answer()), returned});
}

void CuseDevice::refuseTransfer(const Message& message) {
  channel_.answer(message.unique(), -EINVAL);
}

}  // namespace gfast::cuse
