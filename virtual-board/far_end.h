// The modem at the other end of a line, as it answers management messages.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "board_config.h"
#include "chip.h"

class FarEnd {
 public:
  // The answers of `remote` to messages on the line `line`, unless a board file replaced them.
  FarEnd(int line, Chip& remote, const std::vector<FarEndReplacement>& replacements);

  // 0 and the response, or an errno. EINVAL: no such message type; EIO: the far end does not answer it.
  int answer(uint32_t type, std::span<const uint8_t> request, std::vector<uint8_t>& response);

 private:
  Chip& remote_;
  std::vector<FarEndReplacement> replacements_;
};
