// What the tests of signals share: symbols as chip bytes, the requests that send and capture them, and the
// samples of a transmit signal.
#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "support/test_clock.h"
#include "unit/sdk/lines.h"

using namespace gfast;

using namespace std::chrono_literals;

constexpr uint32_t kTransmitBuffer = 0x9003C114;  // of a device's only line
constexpr uint32_t kSnapshotCounter = 0x90004940;
constexpr uint32_t kCapturedSymbol = 0x90017DD4;

constexpr uint32_t kReadPiece = 900;  // bytes a request at most
constexpr uint32_t kWritePiece = 128;

using Words = std::vector<uint32_t>;

inline Bytes symbolBytes(const Words& words) {
  Bytes bytes(words.size() * 4);
  for (size_t i = 0; i < words.size(); i++) {
    store_le32(&bytes[4 * i], words[i]);
  }
  return bytes;
}

// A long transfer in the driver's pieces.
inline Script inPieces(Script (*request)(int, uint32_t, const Bytes&), uint32_t mostBytes, int device,
                       uint32_t address, const Bytes& bytes) {
  Script script;
  for (uint32_t at = 0; at < bytes.size(); at += mostBytes) {
    const auto end = std::min<size_t>(bytes.size(), size_t{at} + mostBytes);
    script = script + request(device, address + at,
                              Bytes(bytes.begin() + at, bytes.begin() + static_cast<ptrdiff_t>(end)));
  }
  return script;
}

inline Script sendsSymbol(int device, const Words& words) {
  return inPieces(writes, kWritePiece, device, kTransmitBuffer, symbolBytes(words));
}

inline Script readsSymbol(int device, const Words& words) {
  return inPieces(reads, kReadPiece, device, kCapturedSymbol, symbolBytes(words));
}

// The request that a big-endian processor writes as the number 1, and `polls` answers to it, of which the
// last is that the symbol is there.
inline Script requestsSnapshot(int device, int polls = 1) {
  return writes(device, kSnapshotCounter, {0, 0, 0, 1}) +
         reads(device, kSnapshotCounter, {0, 0, 0, 1}).times(polls - 1) +
         reads(device, kSnapshotCounter, {0, 0, 0, 0});
}

inline Script finds(int device, G9701_linkState_t state) {
  return readsIdentity(device, chipWithLine(state));
}

inline Script capturesSymbol(int device, const Words& words) {
  return finds(device, LS_SHOWTIME) + requestsSnapshot(device) + readsSymbol(device, words);
}

inline int lowSample(uint32_t word) {
  return static_cast<int16_t>(word & 0xFFFF);
}

inline int highSample(uint32_t word) {
  return static_cast<int16_t>(word >> 16);
}

// Both lines are in the table, both devices open, and time passes at once.
class SignalsTest : public testing::Test {
 protected:
  void SetUp() override {
    testClock();
    enterBothLines();
    openDevice(driver_, 0);
    openDevice(driver_, 1);
  }

  ExpectedRequests driver_{Script()};
};
