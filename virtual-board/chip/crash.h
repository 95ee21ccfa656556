// What a chip's processors leave behind when an assertion of theirs fails.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "chip/device_information.h"

namespace gfast::board {

enum class Processor { kFramer, kFdu, kCp };

struct Assertion {
  Processor processor = Processor::kFramer;
  uint32_t id = 0;
  std::vector<uint32_t> params;  // at most CPU_ASSERT_MAX_PARAMS
  // The symbol at which it failed, counted since the chip started, and where the chip's time base stood then:
  // symbol of the frame, phase and sample.
  uint32_t symbolCounter = 0;
  uint32_t tbmSymbol = 0;
  uint32_t tbmPhase = 0;
  uint32_t tbmSample = 0;
};

// The assertion records of the device-information image, one a processor.
class AssertionRecords {
 public:
  // A processor stops at its first assertion: any that follows is counted and not described.
  void add(const Assertion& assertion);

  // Takes away what of the records lies in that part of the image.
  void clear(size_t offset, size_t length);
  void clear() { clear(0, DEV_INF_SIZE); }

  // Into an image of DEV_INF_SIZE bytes, where the records belong.
  void store(std::span<uint8_t> image) const;

 private:
  std::array<uint8_t, DEV_INF_SIZE> image_{};  // used where the records are
};

// Bytes of the image from `begin` to before `end`.
struct ImagePart {
  size_t begin;
  size_t end;
};
// Where assertion records lie within `length` bytes from `offset`.
std::vector<ImagePart> assertionParts(size_t offset, size_t length);

}  // namespace gfast::board
