// A driver that passes everything on to another one and writes it into a field trace.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "driver/driver.h"
#include "driver/field_trace.h"

namespace gfast {

// The file of a trace.
class TraceFile {
 public:
  TraceFile() = default;
  ~TraceFile() { close(); }
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  // Creates the file. 0 or an errno; EEXIST for a file that holds something: it may be the trace of a run
  // that ended badly.
  int open(const char* name);

  bool isOpen() const { return descriptor_ >= 0; }

  // 0 or an errno, after which the file is closed. Does nothing on a closed file. Calls do not overlap.
  int write(std::string_view text);

  void close();

 private:
  std::atomic<int> descriptor_{-1};
};

class RecordingDriver final : public Driver {
 public:
  // Who makes it is the command thread. The recorded driver must outlive it. A file that cannot be created,
  // and later one that cannot be written, is one line on standard error, and no more is recorded.
  RecordingDriver(Driver& recorded, const std::string& file, bool blanked);

  int open(int device) override;
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;
  void close(int descriptor) override;
  void rediscover() override;

 private:
  struct OpenDevice {
    int descriptor;
    int device;
  };
  struct Exchange {
    TraceThread thread;
    TraceRequest request;
    TraceAnswer answer;
  };

  template <typename Action>
  void withoutFailing(Action action);
  int deviceOf(int descriptor);
  void remember(int descriptor, int device);
  void forget(int descriptor);
  void write(TraceRequest&& request, TraceAnswer&& answer = {});
  std::string nextText(const Exchange& exchange);
  bool isSame(const Exchange& exchange);
  void report(const char* reason) const;

  Driver& recorded_;
  const std::string name_;
  const bool blanked_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  const std::thread::id commandThread_ = std::this_thread::get_id();
  TraceFile file_;    // any thread may ask whether it is open
  std::mutex mutex_;  // guards writing to the file and everything below
  std::vector<OpenDevice> devices_;
  std::vector<Exchange> remembered_;  // what was asked longest ago first
};

// The driver itself. With GFAST_TRACE=FILE in the environment, another one that records its requests in that
// file; with GFAST_TRACE_BLANK=1, without MAC addresses and serial numbers. It is never destroyed.
Driver& recordedIfAsked(Driver& driver);

}  // namespace gfast
