// The calls that a test expects the library to make of the driver seam, in order, with the bytes that go in
// and come out.
//
//   opens(0) + reads(0, SBR_REG_ADDRESS, {0, 0, 0, 3}) + writes(1, ...).fails(EIO)
#pragma once

#include <qvr.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/bytes.h"

using namespace gfast;

// One call of the driver seam.
struct ExpectedCall {
  enum class Kind { kOpen, kRequest, kClose, kRediscover };
  Kind kind;
  int device = 0;
  uint32_t code = 0;
  gfast_iocreq request{};  // every byte must arrive so, except the buffer's address
  uint32_t bufferSize = 0;
  Bytes in;             // what the buffer must begin with
  Bytes out;            // what the buffer receives
  int error = 0;        // errno of a failure, 0: success
  uint32_t copied = 0;  // copied length that the driver reports, also when it fails
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

  // The last call fails with this errno and reports so many copied bytes.
  Script fails(int error, uint32_t copied = 0) const;

  // The calls up to the one at `position`, which fails. Nothing follows a failure.
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

// Calls `each` with the pieces of the bytes, at most `most` bytes long, and where each begins.
Script inPieces(const Bytes& bytes, size_t most,
                const std::function<Script(uint32_t offset, const Bytes& piece)>& each);

// A long transfer in the pieces that the driver takes.
Script readsInPieces(int device, uint32_t address, const Bytes& bytes);
Script writesInPieces(int device, uint32_t address, const Bytes& bytes);
