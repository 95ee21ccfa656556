// A device file as the kernel sees it. The test is the kernel: a message a packet on a pair of sockets.
#include "gfast-cuse/cuse/cuse_device.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fuse.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include "driver/envelope.h"
#include "unit/device-files/counting_board.h"

using namespace gfast;
using namespace gfast::cuse;

namespace {

// The envelope's and its buffer's addresses in the program that asks: numbers here.
constexpr uint64_t kEnvelopeAt = 0x10000;
constexpr uintptr_t kBufferAt = 0x20000;

template <typename... Parts>
std::string joined(const Parts&... parts) {
  std::string text;
  (text.append(reinterpret_cast<const char*>(&parts), sizeof parts), ...);
  return text;
}

struct Answer {
  fuse_out_header head{};
  std::string body;

  template <typename T>
  T as() const {
    T value{};
    EXPECT_GE(body.size(), sizeof value);
    std::memcpy(&value, body.data(), std::min(body.size(), sizeof value));
    return value;
  }
};

// What an ioctl came to.
struct Result {
  int value;
  gfast_iocreq envelope;
  std::string buffer;
};

class Kernel : public testing::Test {
 protected:
  Kernel() {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    kernel_ = ends[0];
    device_.emplace(board_, 0, ends[1]);
  }

  ~Kernel() override { end(); }

  // Begins as the kernel does and lets the device answer from now on.
  void start() {
    sendInit();
    EXPECT_EQ(device_->introduce(), "");
    receive();
    server_ = std::thread([this] { device_->serve(); });
  }

  void end() {
    if (kernel_ >= 0) {
      close(kernel_);
      kernel_ = -1;
    }
    if (server_.joinable()) {
      server_.join();
    }
    device_.reset();
  }

  void sendRaw(const std::string& packet) {
    EXPECT_EQ(::send(kernel_, packet.data(), packet.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(packet.size()));
  }

  void send(uint32_t opcode, const std::string& body) {
    fuse_in_header head{};
    head.len = static_cast<uint32_t>(sizeof head + body.size());
    head.opcode = opcode;
    head.unique = ++unique_;
    sendRaw(joined(head) + body);
  }

  void sendInit(uint32_t major = FUSE_KERNEL_VERSION, uint32_t flags = CUSE_UNRESTRICTED_IOCTL) {
    send(CUSE_INIT, joined(cuse_init_in{major, FUSE_KERNEL_MINOR_VERSION, 0, flags}));
  }

  std::optional<Answer> receive(int patience_ms = 60000) {
    pollfd peer{kernel_, POLLIN, 0};
    if (::poll(&peer, 1, patience_ms) != 1) {
      return std::nullopt;
    }
    std::string packet(1 << 18, '\0');
    packet.resize(static_cast<size_t>(std::max<ssize_t>(recv(kernel_, packet.data(), packet.size(), 0), 0)));
    Answer answer;
    EXPECT_GE(packet.size(), sizeof answer.head);
    std::memcpy(&answer.head, packet.data(), sizeof answer.head);
    EXPECT_EQ(answer.head.len, packet.size());
    answer.body = packet.substr(sizeof answer.head);
    return answer;
  }

  Answer ask(uint32_t opcode, const std::string& body) {
    send(opcode, body);
    const Answer answer = receive().value_or(Answer());
    EXPECT_EQ(answer.head.unique, unique_);
    return answer;
  }

  int errorOf(uint32_t opcode, const std::string& body) { return -ask(opcode, body).head.error; }

  Answer open(uint32_t flags = O_RDWR) { return ask(FUSE_OPEN, joined(fuse_open_in{flags, 0})); }
  uint64_t handle() { return open().as<fuse_open_out>().fh; }

  fuse_ioctl_in call(uint64_t fh, uint32_t code, uint32_t in = 0, uint32_t out = 0) {
    return {fh, FUSE_IOCTL_UNRESTRICTED, code, kEnvelopeAt, in, out};
  }

  // As the kernel does it: asks with nothing, and then again with what it is told to bring.
  Result ioctl(uint64_t fh, uint32_t code, const gfast_iocreq& envelope, const std::string& buffer = "") {
    std::string data;
    uint32_t room = 0;
    for (rounds_ = 1; rounds_ < 10; rounds_++) {
      const Answer answer =
          ask(FUSE_IOCTL, joined(call(fh, code, static_cast<uint32_t>(data.size()), room)) + data);
      EXPECT_EQ(answer.head.error, 0);
      const auto out = answer.as<fuse_ioctl_out>();
      std::string rest = answer.body.substr(std::min(answer.body.size(), sizeof out));
      if ((out.flags & FUSE_IOCTL_RETRY) == 0) {
        Result result{out.result, envelope, ""};
        EXPECT_LE(rest.size(), room);
        std::memcpy(&result.envelope, rest.data(), std::min(rest.size(), sizeof envelope));
        result.buffer = rest.substr(std::min(rest.size(), sizeof envelope));
        return result;
      }
      EXPECT_EQ(rest.size(), (out.in_iovs + out.out_iovs) * sizeof(fuse_ioctl_iovec));
      data.clear();
      room = 0;
      for (uint32_t i = 0; i < out.in_iovs + out.out_iovs; i++) {
        fuse_ioctl_iovec area{};
        std::memcpy(&area, rest.data() + i * sizeof area, sizeof area);
        const std::string whole = area.base == kEnvelopeAt ? joined(envelope) : buffer;
        EXPECT_TRUE(area.base == kEnvelopeAt || area.base == kBufferAt);
        EXPECT_LE(area.len, whole.size());
        if (i < out.in_iovs) {
          data += whole.substr(0, static_cast<size_t>(area.len));
        } else {
          room += static_cast<uint32_t>(area.len);
        }
      }
    }
    ADD_FAILURE() << "it asks for ever";
    return {};
  }

  int countOpen(uint64_t fh) { return ioctl(fh, DFEIOCGETRESULT, emptyRequest()).envelope.retcode; }

  void setPending(uint64_t fh, bool pending) {
    gfast_iocreq request = emptyRequest();
    request.req_u.setporttag.port_idx = pending ? 1 : 0;
    EXPECT_EQ(ioctl(fh, DFEIOCSETPORTTAG, request).value, 0);
  }

  uint32_t poll(uint64_t fh, uint64_t kh, uint32_t flags) {
    return ask(FUSE_POLL, joined(fuse_poll_in{fh, kh, flags, POLLIN})).as<fuse_poll_out>().revents;
  }

  static gfast_iocreq memory(uint16_t length, uint32_t size) {
    gfast_iocreq request = emptyRequest();
    request.req_u.memread = {0xE0000041, length, reinterpret_cast<char*>(kBufferAt), size, 0, 0};
    return request;
  }

  CountingBoard board_;
  std::optional<CuseDevice> device_;
  std::thread server_;
  int kernel_ = -1;
  uint64_t unique_ = 0;
  int rounds_ = 0;
};

using Cuse = Kernel;

TEST_F(Cuse, TellsItsNameAndThatItNamesTheBytesItself) {
  sendInit();
  EXPECT_EQ(device_->introduce(), "");
  const Answer answer = receive().value_or(Answer());
  EXPECT_EQ(answer.head.error, 0);
  EXPECT_EQ(answer.head.unique, unique_);
  const auto out = answer.as<cuse_init_out>();
  EXPECT_EQ(out.major, static_cast<uint32_t>(FUSE_KERNEL_VERSION));
  EXPECT_EQ(out.flags, static_cast<uint32_t>(CUSE_UNRESTRICTED_IOCTL));
  EXPECT_EQ(answer.body.substr(sizeof out), std::string("DEVNAME=gfdfe0\0", 15));
}

TEST_F(Cuse, RefusesAKernelOfAnotherProtocol) {
  sendInit(FUSE_KERNEL_VERSION + 1);
  EXPECT_EQ(device_->introduce(), "the kernel's protocol is another");
  EXPECT_EQ(receive().value_or(Answer()).head.error, -EPROTO);
  sendInit(FUSE_KERNEL_VERSION, 0);
  EXPECT_EQ(device_->introduce(), "the kernel's protocol is another");
  send(CUSE_INIT, "short");
  EXPECT_EQ(device_->introduce(), "the kernel did not begin as it should");
  send(FUSE_OPEN, joined(fuse_open_in{}));
  EXPECT_EQ(device_->introduce(), "the kernel did not begin as it should");
  shutdown(kernel_, SHUT_RDWR);
  EXPECT_EQ(device_->introduce(), "the kernel did not begin as it should");
}

TEST_F(Cuse, OpensForReadingAndWritingOnly) {
  start();
  EXPECT_EQ(open(O_RDONLY).head.error, -EACCES);
  EXPECT_EQ(open(O_WRONLY).head.error, -EACCES);
  EXPECT_EQ(board_.opened(), 0);
  const uint64_t first = handle();
  EXPECT_NE(handle(), first);
  EXPECT_EQ(countOpen(first), 2);
}

TEST_F(Cuse, ClosesWhatIsReleasedAndAllInTheEnd) {
  start();
  const uint64_t first = handle();
  const uint64_t second = handle();
  EXPECT_EQ(errorOf(FUSE_RELEASE, joined(fuse_release_in{first, 0, 0, 0})), 0);
  EXPECT_EQ(countOpen(second), 1);
  EXPECT_EQ(errorOf(FUSE_RELEASE, joined(fuse_release_in{first, 0, 0, 0})), EBADF);
  EXPECT_EQ(errorOf(FUSE_IOCTL, joined(call(first, DFEIOCGETRESULT))), EBADF);
  end();
  EXPECT_EQ(board_.open(), 0U);
}

TEST_F(Cuse, FetchesTheEnvelopeAndThenItsBuffer) {
  start();
  const uint64_t fh = handle();
  EXPECT_EQ(ioctl(fh, DFEIOCGETRESULT, emptyRequest()).envelope.retcode, 1);
  EXPECT_EQ(rounds_, 2);

  const Result read = ioctl(fh, DFEIOCMEMRD, memory(4, 8), "xxxxxxxx");
  EXPECT_EQ(rounds_, 3);
  EXPECT_EQ(read.value, 0);
  EXPECT_EQ(read.buffer, "AAAA");
  EXPECT_EQ(read.envelope.req_u.memread.datalen_copied_to_user, 4U);
  EXPECT_EQ(read.envelope.req_u.memread.buf, reinterpret_cast<char*>(kBufferAt));

  const Result written = ioctl(fh, DFEIOCMEMWR, memory(4, 8), "AAAAxxxx");
  EXPECT_EQ(written.value, 0);
  EXPECT_EQ(written.buffer, "");

  gfast_iocreq message = emptyRequest();
  message.req_u.farendmsg = {0, 0, reinterpret_cast<char*>(kBufferAt), 8, 3, 8, 0};
  const Result exchanged = ioctl(fh, DFEIOCFARENDMSG, message, "abcdefgh");
  EXPECT_EQ(exchanged.value, 0);
  EXPECT_EQ(exchanged.buffer, "bcd");
}

TEST_F(Cuse, CarriesTheErrorAndTheEnvelopeOfAFailure) {
  start();
  const uint64_t fh = handle();
  const Result failed = ioctl(fh, DFEIOCMEMWR, memory(4, 4), "AAAB");
  EXPECT_EQ(failed.value, -EBADMSG);
  EXPECT_EQ(failed.envelope.req_u.memwrite.hw_mem_addr, 0xE0000041U);
  EXPECT_EQ(ioctl(fh, DFEIOCIMGACT, emptyRequest()).value, -EIO);
}

TEST_F(Cuse, TakesBuffersOf64KiBAndNoLarger) {
  start();
  const uint64_t fh = handle();
  gfast_iocreq message = emptyRequest();
  message.req_u.farendmsg = {0, 0, reinterpret_cast<char*>(kBufferAt), 65536, 65536, 65536, 0};
  EXPECT_EQ(ioctl(fh, DFEIOCFARENDMSG, message, std::string(65536, 'a')).buffer, std::string(65536, 'b'));
  message.req_u.farendmsg.bufsize = 65537;
  const auto size = static_cast<uint32_t>(sizeof message);
  EXPECT_EQ(errorOf(FUSE_IOCTL, joined(call(fh, DFEIOCFARENDMSG, size, size), message)), EINVAL);
}

TEST_F(Cuse, RefusesCodesThatAreNotTheDriversAndShorterPointers) {
  start();
  const uint64_t fh = handle();
  EXPECT_EQ(errorOf(FUSE_IOCTL, joined(call(fh, 0xC0084B01))), ENOTTY);
  EXPECT_EQ(errorOf(FUSE_IOCTL, joined(call(fh, 0xC0044A01))), ENOTTY);
  fuse_ioctl_in shortPointers = call(fh, DFEIOCGETRESULT);
  shortPointers.flags |= FUSE_IOCTL_COMPAT;
  EXPECT_EQ(errorOf(FUSE_IOCTL, joined(shortPointers)), ENOTTY);
  EXPECT_EQ(errorOf(FUSE_READ, joined(fuse_read_in{})), EINVAL);
  EXPECT_EQ(errorOf(FUSE_WRITE, joined(fuse_write_in{})), EINVAL);
}

TEST_F(Cuse, TellsOnceWhenSomethingIsPending) {
  start();
  const uint64_t fh = handle();
  const uint64_t other = handle();
  EXPECT_EQ(poll(fh, 0x1234, FUSE_POLL_SCHEDULE_NOTIFY), 0U);
  EXPECT_EQ(poll(other, 0x5678, FUSE_POLL_SCHEDULE_NOTIFY), 0U);
  gfast_iocreq pending = emptyRequest();
  pending.req_u.setporttag.port_idx = 1;
  const auto size = static_cast<uint32_t>(sizeof pending);
  send(FUSE_IOCTL, joined(call(fh, DFEIOCSETPORTTAG, size, size), pending));
  // The answer and the word that something is pending come from two threads.
  bool told = false;
  for (int i = 0; i < 2; i++) {
    const Answer answer = receive().value_or(Answer());
    if (answer.head.unique == 0) {
      told = true;
      EXPECT_EQ(answer.head.error, FUSE_NOTIFY_POLL);
      EXPECT_EQ(answer.as<fuse_notify_poll_wakeup_out>().kh, 0x1234U);
    }
  }
  EXPECT_TRUE(told);
  EXPECT_EQ(receive(100), std::nullopt);
  EXPECT_EQ(poll(fh, 0x1234, 0), static_cast<uint32_t>(POLLIN | POLLRDNORM));
  EXPECT_EQ(poll(other, 0x5678, 0), 0U);
  setPending(fh, false);
  EXPECT_EQ(poll(fh, 0x1234, 0), 0U);
}

TEST_F(Cuse, ForgetsWhoWaitedOnWhatIsReleased) {
  start();
  const uint64_t fh = handle();
  EXPECT_EQ(poll(fh, 0x1234, FUSE_POLL_SCHEDULE_NOTIFY), 0U);
  EXPECT_EQ(errorOf(FUSE_RELEASE, joined(fuse_release_in{fh, 0, 0, 0})), 0);
  // The board's next descriptor has the same number.
  const uint64_t next = handle();
  EXPECT_EQ(next, fh);
  setPending(next, true);
  EXPECT_EQ(receive(100), std::nullopt);
}

TEST_F(Cuse, ServesOneRequestWhileAnotherWaitsForTheFarEnd) {
  start();
  const uint64_t fh = handle();
  gfast_iocreq slow = emptyRequest();
  slow.req_u.farendmsg.port_idx = 100;  // a second
  const auto size = static_cast<uint32_t>(sizeof slow);
  send(FUSE_IOCTL, joined(call(fh, DFEIOCFARENDMSG, size, size), slow));
  const uint64_t first = unique_;
  EXPECT_EQ(countOpen(fh), 1);
  EXPECT_EQ(receive().value_or(Answer()).head.unique, first);
}

TEST_F(Cuse, GivesNoAnswerToAnInterruption) {
  start();
  send(FUSE_INTERRUPT, joined(fuse_interrupt_in{1}));
  send(FUSE_FORGET, joined(fuse_forget_in{1}));
  EXPECT_EQ(receive(100), std::nullopt);
  EXPECT_EQ(errorOf(FUSE_LOOKUP, "x"), ENOSYS);
}

TEST_F(Cuse, RefusesMessagesThatAreNotWhole) {
  start();
  sendRaw("too short for a head");
  EXPECT_EQ(receive(100), std::nullopt);
  fuse_in_header head{};
  head.opcode = FUSE_OPEN;
  head.unique = 77;
  for (const uint32_t length : {0U, 1U, static_cast<uint32_t>(sizeof head + 100), UINT32_MAX}) {
    head.len = length;
    sendRaw(joined(head, fuse_open_in{O_RDWR, 0}));
    EXPECT_EQ(receive().value_or(Answer()).head.error, -EINVAL);
  }
  EXPECT_EQ(errorOf(FUSE_OPEN, "four"), EINVAL);
  EXPECT_EQ(errorOf(FUSE_RELEASE, "four"), EBADF);
  EXPECT_EQ(errorOf(FUSE_POLL, "four"), EBADF);
  EXPECT_EQ(errorOf(FUSE_IOCTL, "four"), EINVAL);
  const uint64_t fh = handle();
  EXPECT_EQ(errorOf(FUSE_IOCTL, joined(call(fh, DFEIOCMEMRD, 144, 144)) + "less"), EINVAL);
  EXPECT_EQ(errorOf(FUSE_IOCTL, joined(call(fh, DFEIOCMEMRD, UINT32_MAX, 144)) + "less"), EINVAL);
  EXPECT_EQ(countOpen(fh), 1);
}

TEST_F(Cuse, SurvivesGarbage) {
  start();
  const uint64_t fh = handle();
  std::mt19937 draw(1);
  const uint32_t opcodes[] = {FUSE_OPEN, FUSE_RELEASE, FUSE_POLL, FUSE_IOCTL, FUSE_READ, CUSE_INIT, 0, 99};
  for (int i = 0; i < 2000; i++) {
    std::string body(draw() % 400, '\0');
    for (char& byte : body) {
      byte = static_cast<char>(draw());
    }
    // Half of them name an open file, but the one that is kept is never released.
    const uint32_t opcode = opcodes[draw() % std::size(opcodes)];
    if (body.size() >= sizeof fh && draw() % 2 == 0 && opcode != FUSE_RELEASE) {
      std::memcpy(body.data(), &fh, sizeof fh);
    }
    if (body.size() >= sizeof(fuse_ioctl_in) && opcode == FUSE_IOCTL) {
      fuse_ioctl_in in{};
      std::memcpy(&in, body.data(), sizeof in);
      in.flags &= ~static_cast<uint32_t>(FUSE_IOCTL_COMPAT);
      in.cmd = DFEIOC_REQUEST_CODE(static_cast<uint32_t>(draw() % 16));
      in.in_size = static_cast<uint32_t>(body.size() - sizeof in - draw() % 2);
      in.out_size = static_cast<uint32_t>(draw() % 400);
      std::memcpy(body.data(), &in, sizeof in);
    }
    send(opcode, body);
    while (receive().value_or(Answer()).head.unique != unique_) {
    }
  }
  EXPECT_GE(countOpen(fh), 1);
}

}  // namespace
