// Failed assertions of a chip's processors.
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
  // When it failed: the symbol since the chip started, and the chip's time base (symbol of the frame, phase,
  // sample).
  uint32_t symbolCounter = 0;
  uint32_t tbmSymbol = 0;
  uint32_t tbmPhase = 0;
  uint32_t tbmSample = 0;
};

// The assertion records in the device-information image, one for each processor.
class AssertionRecords {
 public:
  // The record describes the processor's first assertion. Later ones are only counted.
  void add(const Assertion& assertion);

  // Clears the bytes of the records within `length` bytes from `offset` of the image.
  void clear(size_t offset, size_t length);
  void clear() { clear(0, DEV_INF_SIZE); }

  // Copies the records into an image of DEV_INF_SIZE bytes.
  void store(std::span<uint8_t> image) const;

 private:
  std::array<uint8_t, DEV_INF_SIZE> image_{};  // only the bytes of the records are used
};

// Bytes of the image from `begin` to before `end`.
struct ImagePart {
  size_t begin;
  size_t end;
};
// Where assertion records lie within `length` bytes from `offset`.
std::vector<ImagePart> assertionParts(size_t offset, size_t length);

}  // namespace gfast::board
