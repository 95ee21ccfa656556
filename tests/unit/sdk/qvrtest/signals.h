// What the tests of signals share: symbols of words, their samples, and devices that are open.
#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "support/assertions.h"
#include "support/devices.h"
#include "support/lines.h"
#include "support/plain_transform.h"
#include "support/test_clock.h"
#include "support/test_symbols.h"

using namespace gfast;

using namespace std::chrono_literals;

inline Script finds(int device, G9701_linkState_t state) {
  return readsIdentity(device, chipWithLine(state));
}

inline int lowSample(uint32_t word) {
  return static_cast<int16_t>(word & 0xFFFF);
}

inline int highSample(uint32_t word) {
  return static_cast<int16_t>(word >> 16);
}

// What a capture of these words becomes, by the plain loop.
inline Points plainSpectrum(const Words& words) {
  Points samples;
  for (const uint32_t word : words) {
    samples.emplace_back(lowSample(word));
    samples.emplace_back(highSample(word));
  }
  Points spectrum(samples.size());
  PlainTransform(samples.size(), {"unitary", TRUE, TRUE}, Direction::kForward).run(samples, spectrum);
  return spectrum;
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
