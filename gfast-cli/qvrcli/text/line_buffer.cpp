#include "qvrcli/text/line_buffer.h"

#include <algorithm>
#include <cstring>

namespace gfast::console {

namespace {

char mDisplayBuf[1000];
uint32_t mDisplayBufIdx = 0;

constexpr uint32_t kLineSize = sizeof mDisplayBuf - 1;  // characters, without the terminator

}  // namespace

void AddMessage(const char* xi_text, uint32_t xi_column) {
  while (mDisplayBufIdx < std::min(xi_column, kLineSize)) {
    mDisplayBuf[mDisplayBufIdx++] = ' ';
  }
  while (mDisplayBufIdx < kLineSize && *xi_text != '\0') {
    mDisplayBuf[mDisplayBufIdx++] = *xi_text++;
  }
}

void PrintMessage(cli_def* xi_cli) {
  mDisplayBuf[mDisplayBufIdx] = '\0';
  cli_print(xi_cli, "%s", mDisplayBuf);
  mDisplayBufIdx = 0;
}

void copyToString(char* xo_text, const void* xi_bytes, int xi_length) {
  std::memcpy(xo_text, xi_bytes, static_cast<size_t>(xi_length));
  xo_text[xi_length] = '\0';
}

const char* filler(char xi_fillCharacter, uint8_t xi_width) {
  static char fillLine[80];
  const size_t width = std::min<size_t>(xi_width, sizeof fillLine - 1);
  std::memset(fillLine, xi_fillCharacter, width);
  fillLine[width] = '\0';
  return fillLine;
}

}  // namespace gfast::console
