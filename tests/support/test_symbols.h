// Symbols of test signals: the requests that send and capture them.
#pragma once

#include "support/chip_identity.h"
#include "support/driver_script.h"

using namespace gfast;

constexpr uint32_t kTransmitBuffer = 0x9003C114;  // of a device's only line
constexpr uint32_t kSnapshotCounter = 0x90004940;
constexpr uint32_t kCapturedSymbol = 0x90017DD4;

// A symbol is as many words as the chip has room for.
using Words = std::vector<uint32_t>;

inline Script sendsSymbol(int device, const Words& symbol) {
  return writesInPieces(device, kTransmitBuffer, words(symbol));
}

inline Script readsSymbol(int device, const Words& symbol) {
  return readsInPieces(device, kCapturedSymbol, words(symbol));
}

// The request that a big-endian processor writes as the number 1, and `polls` answers to it. The last answer
// is that the symbol is there.
inline Script requestsSnapshot(int device, int polls = 1) {
  return writes(device, kSnapshotCounter, {0, 0, 0, 1}) +
         reads(device, kSnapshotCounter, {0, 0, 0, 1}).times(polls - 1) +
         reads(device, kSnapshotCounter, {0, 0, 0, 0});
}

inline Script capturesSymbol(int device, const Words& symbol) {
  return findsLineUp(device) + requestsSnapshot(device) + readsSymbol(device, symbol);
}
