// Log records as lines.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "chip/log_records.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

// The log records that are pending, one line each: core, format, parameters. The line end of each format is
// checked and left out: "CP link %u: state %u to %u (0, 3, 4)".
inline std::vector<std::string> logLines(Bench& bench, int device) {
  static constexpr const char* cores[] = {"FDU ", "FRM ", "CP "};
  std::vector<std::string> lines;
  for (auto bytes = fromHex(bench.logs(device)); !bytes.empty(); bytes = fromHex(bench.logs(device))) {
    for (size_t at = 0; at < bytes.size();) {
      const uint8_t core = bytes.at(at + STRING_HEADER_CORE_TYPE);
      const size_t params = bytes.at(at + STRING_HEADER_NUM_PARAMS);
      const size_t length = bytes.at(at + STRING_HEADER_TEXT_LENGTH);
      std::string line = cores[core];
      for (size_t i = 0; i < length; i += core == FDU_CORE ? 1 : 2) {
        line += static_cast<char>(bytes.at(at + STRING_HEADER_SIZE + i));
      }
      EXPECT_TRUE(line.ends_with('\n')) << line;
      line.pop_back();
      at += STRING_HEADER_SIZE + length;
      for (size_t i = 0; i < params; i++, at += 4) {
        line += (i == 0 ? " (" : ", ") + std::to_string(load_le32(&bytes.at(at)));
      }
      at += length % 2;
      lines.push_back(params == 0 ? line : line + ')');
    }
  }
  return lines;
}
