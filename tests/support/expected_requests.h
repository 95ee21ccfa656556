// A driver that expects a list of requests: a test writes down what the library must ask, in order, with the
// bytes that go in and come out, and every other request, field or order fails the test, as does a request
// that was never made.
//
//   ExpectedRequests driver(opens(0) + reads(0, SBR_REG_ADDRESS, {0, 0, 0, 3}) + writes(1, ...).fails(EIO));
#pragma once

#include <qvr.h>

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "driver/driver.h"

using namespace gfast;

using Bytes = std::vector<uint8_t>;

// One call of the driver seam.
struct ExpectedCall {
  enum class Kind { kOpen, kRequest, kClose, kRediscover };
  Kind kind;
  int device = 0;
  uint32_t code = 0;
  gfast_iocreq request{};  // every byte as it must arrive, the buffer's address aside
  uint32_t bufferSize = 0;
  Bytes in;             // what the buffer must begin with
  Bytes out;            // what the buffer receives
  int error = 0;        // errno of a failure, 0: success
  uint32_t copied = 0;  // what the driver says it copied, also when it fails
};

// Calls in the order in which they must be made.
class Script {
 public:
  Script() = default;
  explicit Script(ExpectedCall call) { calls_.push_back(std::move(call)); }

  const std::vector<ExpectedCall>& calls() const { return calls_; }
  size_t size() const { return calls_.size(); }

  Script operator+(const Script& next) const;
  Script times(int count) const;

  // The last call fails with this errno, having copied so many bytes as far as the driver says.
  Script fails(int error, uint32_t copied = 0) const;

  // The calls up to the one at `position`, which fails: what remains of a script when nothing follows a
  // failure.
  Script failingAt(size_t position, int error) const;

 private:
  std::vector<ExpectedCall> calls_;
};

Script opens(int device);
Script closes(int device);
Script rediscovers();
Script reads(int device, uint32_t address, const Bytes& bytes);
Script writes(int device, uint32_t address, const Bytes& bytes);
Script readsWord(int device, uint32_t address, uint32_t value);  // a chip word, little-endian
Script writesWord(int device, uint32_t address, uint32_t value);
Script activates(int device, uint32_t address);
Script downloads(int device, const std::string& filename);
Script erases(int device, flasherase_type type, uint32_t address);
Script programs(int device, const std::string& filename, uint32_t address);
Script configuresLog(int device);
Script readsLog(int device, const Bytes& records);
Script readsEvent(int device, const Bytes& event);

// The message's buffer has room for responseSize bytes.
Script sendsToFarEnd(int device, uint16_t narrowLine, MGMT_FAR_END_REQ_TYPE type, const Bytes& message,
                     uint32_t responseSize, const Bytes& response);

// What a chip answers about itself: boot register, device-information image, boot-stage registers.
struct ChipIdentity {
  ChipIdentity();
  void setWord(size_t infoOffset, uint32_t value);
  void setLinkState(G9701_linkState_t state);

  uint32_t sbr = 0x01800000;  // application firmware
  Bytes info;                 // DEV_INF_SIZE bytes
  Bytes b0Regs;               // B0_REGS_SIZE bytes
};

Script readsIdentity(int device, const ChipIdentity& chip);

// Installs itself. Its destructor fails the test when a call of the script was not made.
class ExpectedRequests final : public Driver {
 public:
  explicit ExpectedRequests(const Script& script);
  ~ExpectedRequests() override;

  // Further calls, expected behind those not made yet.
  void expect(const Script& script);

  // Fails the test when a call was not made, and forgets those.
  void verify();

  static int descriptorOf(int device) { return 40 + device; }

  int open(int device) override;
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;
  void close(int descriptor) override;
  void rediscover() override;

 private:
  // The next call of the script if it is of this kind and device; otherwise the test fails and there is none.
  bool take(ExpectedCall::Kind kind, int device, uint32_t code, const std::string& made, ExpectedCall& next);

  std::mutex lock_;
  std::vector<ExpectedCall> left_;
  int unexpected_ = 0;
};
