// A board that counts what is open, and does what a test asks of it:
//
//   DFEIOCGETRESULT   retcode is the number of open descriptors
//   DFEIOCDEVINFO     retcode is the number of far-end messages so far
//   DFEIOCSETPORTTAG  port_idx 1: something is pending from now on; 0: nothing is
//   DFEIOCMEMRD       every byte is the low byte of the address
//   DFEIOCMEMWR       EBADMSG unless every byte is the low byte of the address
//   DFEIOCFARENDMSG   waits for port_idx hundredths of a second and returns the message with each byte one
//   higher others            EIO
#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>

#include "driver/driver.h"

class CountingBoard final : public gfast::Driver {
 public:
  int open(int device) override {
    if (device != 0) {
      errno = ENODEV;
      return -1;
    }
    const std::lock_guard lock(mutex_);
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    descriptors_.insert(descriptor);
    opened_++;
    return descriptor;
  }

  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    errno = answer(descriptor, code, request);
    return errno == 0 ? 0 : -1;
  }

  void close(int descriptor) override {
    const std::lock_guard lock(mutex_);
    descriptors_.erase(descriptor);
    ::close(descriptor);
  }

  void rediscover() override { rediscoveries_++; }

  size_t open() const { return descriptors_.size(); }
  int opened() const { return opened_; }
  int rediscoveries() const { return rediscoveries_; }

 private:
  int answer(int descriptor, uint32_t code, gfast_iocreq& request) {
    auto& u = request.req_u;
    const std::lock_guard lock(mutex_);
    switch (code) {
      case DFEIOCGETRESULT:
        request.retcode = static_cast<int32_t>(descriptors_.size());
        return 0;
      case DFEIOCDEVINFO:
        request.retcode = messages_;
        return 0;
      case DFEIOCSETPORTTAG: {
        eventfd_t value = 1;
        u.setporttag.port_idx != 0 ? ::eventfd_write(descriptor, value) : ::eventfd_read(descriptor, &value);
        return 0;
      }
      case DFEIOCMEMRD:
        if (!holds(u.memread.buf, u.memread.bufsize, u.memread.hw_mem_len)) {
          return EINVAL;
        }
        std::fill_n(u.memread.buf, u.memread.hw_mem_len, static_cast<char>(u.memread.hw_mem_addr));
        u.memread.datalen_copied_to_user = u.memread.hw_mem_len;
        return 0;
      case DFEIOCMEMWR:
        if (!holds(u.memwrite.buf, u.memwrite.bufsize, u.memwrite.hw_mem_len)) {
          return EINVAL;
        }
        return std::count(u.memwrite.buf, u.memwrite.buf + u.memwrite.hw_mem_len,
                          static_cast<char>(u.memwrite.hw_mem_addr)) == u.memwrite.hw_mem_len
                   ? 0
                   : EBADMSG;
      case DFEIOCFARENDMSG:
        return exchange(u.farendmsg);
      default:
        return EIO;
    }
  }

  static bool holds(const char* buffer, uint32_t size, uint32_t length) {
    return size >= length && (buffer != nullptr || length == 0);
  }

  int exchange(gfast_farendmsg& message) {
    if (!holds(message.buf, message.bufsize, message.outmsg_datalen)) {
      return EINVAL;
    }
    messages_++;
    mutex_.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(10 * message.port_idx));
    mutex_.lock();
    for (uint32_t i = 0; i < message.outmsg_datalen; i++) {
      message.buf[i]++;
    }
    message.datalen_copied_to_user = message.outmsg_datalen;
    return 0;
  }

  std::mutex mutex_;
  std::set<int> descriptors_;
  int opened_ = 0;
  int rediscoveries_ = 0;
  int messages_ = 0;
};
