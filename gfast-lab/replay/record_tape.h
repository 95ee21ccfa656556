// The events and log records of a field trace, as the notification thread took them.
//
// That thread goes in rounds: events of each device, then logs of each. What one round took can be taken
// again once its time has come, one record after the other, so the order stays what it was, however late the
// thread comes. What nobody takes is put aside: it holds up nothing, and can still be taken.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "gfast-lab/replay/trace_reader.h"

namespace gfast::replay {

class RecordTape {
 public:
  using Answer = std::shared_ptr<const TraceAnswer>;

  // Whether this is a request that the tape answers.
  static bool answers(TraceKind kind) { return kind == TraceKind::kEventRead || kind == TraceKind::kLogRead; }

  // Takes the exchanges of a trace in their order.
  void add(const TracedExchange& exchange);

  // Nobody takes the records of a device that is not open, nor logs before they are asked for.
  void setOpen(int device, bool open) { devices_[device].open = open; }
  void setLogging(int device) { devices_[device].logging = true; }

  // Lets the next round be taken when it is due and all before it was taken or put aside.
  void advance(uint64_t now_us);

  // Puts aside what was due and not taken.
  void giveUp() { putAside(end_); }

  // What the device says next, never null.
  Answer take(TraceKind kind, int device);

  // Whether the device has something to say now.
  bool has(int device) const;

  // When the next round comes that somebody will take; empty: never.
  std::optional<uint64_t> next_us() const;

  // Whether the device has something to say in that round.
  bool speaksNext(int device) const;

  // Whether everything that was due has been taken, and whoever took it has asked for more.
  bool done() const;

 private:
  struct Record {
    size_t round;
    TraceKind kind;
    int device;
    Answer answer;
  };
  struct Device {
    bool open = false;
    bool logging = false;
    bool handling = false;     // what was taken last may still be at work
    std::deque<Record> aside;  // what was not taken in its turn
  };

  bool isWanted(const Record& record) const;
  void putAside(size_t end);
  void passUnwanted();
  size_t endOfRound(size_t record) const;
  size_t nextWanted() const;

  std::vector<uint64_t> rounds_us_;
  std::vector<Record> records_;
  int lastRank_ = -1;
  bool lastEnded_ = true;
  size_t front_ = 0;                             // of the records that can be taken
  size_t end_ = 0;                               // of those
  std::chrono::steady_clock::time_point moved_;  // when one was taken last, or let be taken
  std::map<int, Device> devices_;
};

}  // namespace gfast::replay
