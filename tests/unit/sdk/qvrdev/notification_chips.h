// Two chips with queues of event and log records behind the driver seam, and a clock with which a test
// decides when the devices are readable.
#pragma once

#include <qvr.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "chip/boot_register.h"
#include "clock/clock.h"
#include "driver/driver.h"
#include "support/bytes.h"

using namespace gfast;

using Record = Bytes;

// An event record with a time stamp, its type and two parameters.
inline Record event(uint32_t type, uint32_t param0 = 0, uint32_t param1 = 0) {
  return words({0x11111111, 0x22222222, type, param0, param1});
}

struct Chip {
  int descriptor = -1;  // -1: the device cannot be opened
  bool answers = true;  // memory reads
  bool eventsAreRefused = false;
  std::deque<Record> events;
  std::deque<Record> logs;
  uint32_t claimed = 0;  // unless 0, the copied length that the driver reports
  int livenessReads = 0;
  int eventReads = 0;
  int logReads = 0;
  std::vector<Record> logConfigurations;
};

class Chips final : public Driver {
 public:
  int open(int device) override { return chip(device).descriptor; }

  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    const std::lock_guard guard(lock_);
    const auto found = std::ranges::find(chips_, descriptor, &Chip::descriptor);
    if (descriptor < 0 || found == chips_.end()) {
      return -1;
    }
    switch (code) {
      case DFEIOCMEMRD:
        return readMemory(*found, request.req_u.memread);
      case DFEIOCALMRD:
        found->eventReads++;
        return found->eventsAreRefused ? -1 : takeRecord(*found, found->events, request.req_u.logalm_read);
      case DFEIOCLOGRD:
        found->logReads++;
        return takeRecord(*found, found->logs, request.req_u.logalm_read);
      case DFEIOCLOGCFG: {
        const char* body = request.req_u.logcfg.buf;
        found->logConfigurations.emplace_back(body, body + request.req_u.logcfg.bufsize);
        return refuseLogConfiguration ? -1 : 0;
      }
      default:
        return -1;
    }
  }

  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  Chip& chip(int device) { return chips_[static_cast<size_t>(device)]; }

  // For tests that queue records while the thread runs.
  void queueEvent(int device, Record record) {
    const std::lock_guard guard(lock_);
    chip(device).events.push_back(std::move(record));
  }
  void queueLog(int device, Record record) {
    const std::lock_guard guard(lock_);
    chip(device).logs.push_back(std::move(record));
  }
  bool pending(int descriptor) {
    const std::lock_guard guard(lock_);
    const auto found = std::ranges::find(chips_, descriptor, &Chip::descriptor);
    return found != chips_.end() && (!found->events.empty() || !found->logs.empty());
  }

  bool refuseLogConfiguration = false;

 private:
  static int readMemory(Chip& chip, gfast_memread& read) {
    chip.livenessReads += read.hw_mem_addr == SBR_REG_ADDRESS ? 1 : 0;
    if (!chip.answers) {
      return -1;
    }
    std::memset(read.buf, 0, read.bufsize);
    read.datalen_rcvd_from_hw = read.datalen_copied_to_user = read.bufsize;
    return 0;
  }

  static int takeRecord(const Chip& chip, std::deque<Record>& queue, gfast_logalm_read& read) {
    if (queue.empty()) {
      read.datalen_copied_to_user = 0;
      return 0;
    }
    const Record record = std::move(queue.front());
    queue.pop_front();
    const size_t copied = std::min<size_t>(record.size(), read.bufsize);
    std::memcpy(read.buf, record.data(), copied);
    read.datalen_rcvd_from_hw = static_cast<uint32_t>(record.size());
    read.datalen_copied_to_user = chip.claimed != 0 ? chip.claimed : static_cast<uint32_t>(copied);
    return 0;
  }

  std::mutex lock_;
  std::array<Chip, QVR_K_MAX_DEVICES> chips_;
};

// The wall clock moves only when the test moves it, the steady one while nothing is readable. `readable` says
// which descriptors are readable.
class StandingClock final : public Clock {
 public:
  time_t now() override { return time; }
  std::chrono::microseconds steady() override { return waited; }
  void sleep(std::chrono::microseconds duration) override { sleeps.push_back(duration); }
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) override {
    waits.push_back(duration);
    limits.push_back(limit);
    waitedFor.clear();
    for (int descriptor = 0; descriptor < FD_SETSIZE; descriptor++) {
      if (FD_ISSET(descriptor, &descriptors)) {
        waitedFor.push_back(descriptor);
      }
    }
    const std::chrono::microseconds end = waited + duration;
    while (readableBelow(limit) == 0 && waited < end) {
      const auto next = agenda.begin();
      if (next == agenda.end() || next->first > end) {
        waited = end;
        continue;
      }
      const auto due = agenda.extract(next);
      waited = std::max(waited, due.key());
      due.mapped()();
    }
    for (const int descriptor : waitedFor) {
      if (descriptor >= limit || !readable(descriptor)) {
        FD_CLR(descriptor, &descriptors);
      }
    }
    return readableBelow(limit);
  }

  time_t time = 1000000000;
  std::chrono::microseconds waited{0};
  std::multimap<std::chrono::microseconds, std::function<void()>> agenda;  // what happens during waits
  std::function<bool(int descriptor)> readable = [](int) { return false; };
  std::vector<std::chrono::microseconds> sleeps;
  std::vector<std::chrono::microseconds> waits;
  std::vector<int> limits;
  std::vector<int> waitedFor;  // in the last wait

 private:
  int readableBelow(int limit) const {
    return static_cast<int>(std::ranges::count_if(
        waitedFor, [&](int descriptor) { return descriptor < limit && readable(descriptor); }));
  }
};

// Keeps an object until the process ends, because the notification thread may still use it. The pointer is
// kept too, so that no leak is reported.
template <typename T>
T& forever(T* object) {
  static auto& kept = *new std::vector<T*>;
  kept.push_back(object);
  return *object;
}

// The chips and the clock, installed. They live until the process ends.
struct Bench {
  Chips& chips = forever(new Chips);
  StandingClock& clock = forever(new StandingClock);

  Bench() {
    forever(&driver());
    forever(&clockSource());
    installDriver(chips);
    installClock(clock);
  }

  // The device is opened and its record is read.
  void start(int device, int descriptor) {
    chips.chip(device).descriptor = descriptor;
    QVR_getDeviceInfo(device, nullptr);
    chips.chip(device).livenessReads = 0;
  }
};

// What the callbacks were called with, in order.
inline std::vector<std::string>& told() {
  static auto& entries = *new std::vector<std::string>;
  return entries;
}
