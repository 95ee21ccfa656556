// One chip's device file, as the kernel's protocol for character devices in user space has it.
#pragma once

#include <linux/fuse.h>

#include <mutex>
#include <set>
#include <string>

#include "driver/driver.h"
#include "gfast-cuse/cuse/channel.h"
#include "gfast-cuse/cuse/poll_watch.h"

namespace gfast::cuse {

class CuseDevice {
 public:
  // Takes the channel over, on which the kernel has yet to say its first word.
  CuseDevice(Driver& board, int device, int channel);
  ~CuseDevice();
  CuseDevice(const CuseDevice&) = delete;
  CuseDevice& operator=(const CuseDevice&) = delete;

  // Agrees with the kernel on what the device is; empty, or why that failed.
  std::string introduce();

  // Answers until the connection ends. Several requests at a time: an exchange with the far end takes its
  // time, and others must not wait for it.
  void serve();

 private:
  using Handler = void (CuseDevice::*)(const Message& message);
  struct Opcode {
    uint32_t number;
    Handler handler;
  };
  static const Opcode kOpcodes[];

  void work();
  void handle(const Message& message);
  void open(const Message& message);
  void release(const Message& message);
  void poll(const Message& message);
  void ioctl(const Message& message);
  void ioctl(uint64_t unique, const fuse_ioctl_in& call, std::span<const char> data);
  void neverAnswered(const Message& /*message*/) {}
  void refuseTransfer(const Message& message);

  // The board's descriptor that the kernel's file handle is; -1: it is none.
  int descriptorOf(uint64_t handle);

  Driver& board_;
  const int device_;
  Channel channel_;
  std::mutex mutex_;  // guards the set
  std::set<int> open_;
  PollWatch watch_;
};

}  // namespace gfast::cuse
