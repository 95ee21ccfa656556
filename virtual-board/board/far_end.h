// The modem at the other end of a line: its answers to management messages.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "virtual-board/chip/chip.h"
#include "virtual-board/measured/counter_blocks.h"

namespace gfast::board {

// From a request to the far end until its answer.
constexpr double kFarEndExchange_s = 0.004;

// The answer to one kind of far-end message: bytes, or an errno.
struct FarEndReplacement {
  int line;
  uint32_t request;
  std::vector<uint8_t> response;
  int error = 0;
};

class FarEnd {
 public:
  using Response = std::vector<uint8_t>;

  // `remote` answers messages on the line `line`, unless a board file replaced the answer. `insight` returns
  // what that modem knows of its line.
  FarEnd(int line, Chip& remote, std::function<LineInsight()> insight,
         const std::vector<FarEndReplacement>& replacements);

  // Returns 0 with the response, or an errno:
  //   EINVAL     no such message type
  //   EIO        the far end does not answer this type, or is in reset
  //   ETIMEDOUT  it hangs
  //   others     of a board file
  // The response to a wrong memory message is a header with MGMT_OPCODE_NACK, that to a wrong request for a
  // vector of test parameters is PMD_VECTOR_NACK.
  int answer(uint32_t type, std::span<const uint8_t> request, Response& response);

 private:
  using Answer = Response (FarEnd::*)(std::span<const uint8_t> request);
  static const Answer kAnswers[];

  Response counters(std::span<const uint8_t> request);
  Response inventory(std::span<const uint8_t> request);
  Response readMemory(std::span<const uint8_t> request);
  Response writeMemory(std::span<const uint8_t> request);
  Response pmdParameters(std::span<const uint8_t> request);
  Response pmdVector(std::span<const uint8_t> request);

  Chip& remote_;
  std::function<LineInsight()> insight_;
  std::vector<FarEndReplacement> replacements_;
};

}  // namespace gfast::board
