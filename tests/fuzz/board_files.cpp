// Board files, and the boards that they describe.
#include <string>

#include "fuzz/fuzzed_console.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/description/board_file.h"

using namespace gfast::board;

namespace {

void useBoard(const BoardConfig& config) {
  double now = 0;
  VirtualBoard board(config, [&now] { return now; });
  for (const double moment : {1.0, 4.0, 8.0}) {
    now = moment;
    board.advance();
  }
  if (const int descriptor = board.open(0); descriptor >= 0) {
    char bytes[900];
    gfast_iocreq request{};
    request.req_u.memread = {0xE2000000, sizeof bytes, bytes, sizeof bytes, 0, 0};
    board.request(descriptor, DFEIOCMEMRD, request);
    board.close(descriptor);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(textOf({data, size}));
  if (text.find("dump") != std::string::npos) {
    return 0;  // names files of this machine
  }
  try {
    useBoard(parseBoard(text, "board.toml"));
  } catch (const BoardFileError& error) {
    const std::string message = error.what();
    if (message.find('\n') != std::string::npos || message.size() > 1000) {
      __builtin_trap();  // it is one line, and no long one
    }
  }
  return 0;
}
