// A driver that passes requests on to another one, counts those of one command, and spoils one of them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "driver/driver.h"
#include "support/simulated_console.h"

enum class FaultKind {
  kErrno,   // detail: which
  kVanish,  // the device answers ENODEV from then on, until the command is over
  kDelay,   // the answer comes ten seconds later
  kZeros,   // the answer's bytes
  kOnes,
  kRandom,  // detail: the seed
  kWord32,  // one word of the answer; detail: offset * 16 + which value
  kWord16,
  kLength,  // detail: the bytes of the answer
};

struct Fault {
  uint32_t request = 0;  // counted from 0
  FaultKind kind = FaultKind::kErrno;
  uint32_t detail = 0;

  bool spoilsBytes() const { return kind >= FaultKind::kZeros; }
  std::string text() const;
};

// What a command asked for.
struct SeenRequest {
  uint32_t code = 0;    // 0: opening a device
  uint32_t length = 0;  // bytes of the answer
  uint32_t room = 0;    // bytes that it might have had
};

constexpr size_t kMostSeen = 100000;

// Those of one command. It can lie in memory that two processes share.
struct SeenRequests {
  uint32_t count;
  SeenRequest list[kMostSeen];
};

// Every way in which an answer to this request can be spoiled.
std::vector<Fault> faultsOf(uint32_t number, const SeenRequest& request);

class FaultyDriver final : public gfast::Driver {
 public:
  // Writes down what is asked.
  FaultyDriver(SimulatedConsole& console, SeenRequests& seen) : console_(console), seen_(seen) {}

  // Counts from here on; spoils a request if a fault is given.
  void begin(const Fault* fault);
  void end() { counting_ = false; }

  int open(int device) override;
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;
  void close(int descriptor) override { console_.board().close(descriptor); }
  void rediscover() override { console_.rediscovered(); }

 private:
  bool isNext() const { return fault_ != nullptr && seen_.count == fault_->request; }
  SeenRequest& add(uint32_t code, uint32_t room);
  int spoiled(int descriptor, uint32_t code, gfast_iocreq& request);

  SimulatedConsole& console_;
  bool counting_ = false;
  const Fault* fault_ = nullptr;
  SeenRequests& seen_;
  std::array<int, 2> descriptors_{-1, -1};
  int vanished_ = -1;  // a device
};
