#include "qvrcli/output.h"

#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include "clock/clock.h"
#include "std/bits.h"

namespace {

char mDisplayBuf[1000];
uint32_t mDisplayBufIdx = 0;

constexpr uint32_t kLineSize = sizeof mDisplayBuf - 1;  // characters, without the terminator

constexpr const char* kLinkStates[] = {
    "self test      ", "unit fail      ", "idle           ", "silent         ", "init hs        ",
    "init train     ", "show time      ", "deactivating 1 ", "deactivating 2 ", "pre-deactivating 1",
};

// The stream that stands in for the session's while a command runs.
FILE* bufferedStream = nullptr;
char streamBuffer[64 * 1024];

constexpr size_t kMostWaiting = 100;  // lines

struct WaitingLines {
  std::mutex lock;
  std::vector<std::string> lines;
};

// Never destroyed: the notification thread may still print while the process exits.
WaitingLines& waitingLines() {
  static auto& waiting = *new WaitingLines;
  return waiting;
}

}  // namespace

void AddMessage(const char* xi_text, uint32_t xi_column) {
  while (mDisplayBufIdx < min(xi_column, kLineSize)) {
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

const char* linkStateString(int xi_state) {
  return xi_state >= 0 && xi_state < static_cast<int>(std::size(kLinkStates)) ? kLinkStates[xi_state]
                                                                              : "Unknown        ";
}

void copyToString(char* xo_text, const void* xi_bytes, int xi_length) {
  std::memcpy(xo_text, xi_bytes, static_cast<size_t>(xi_length));
  xo_text[xi_length] = '\0';
}

void toHexString(const uint8_t* xi_bytes, uint32_t xi_count, char* xo_text) {
  *xo_text = '\0';
  for (uint32_t i = 0; i < xi_count; i++) {
    std::snprintf(xo_text + 3 * size_t{i}, 4, "%02X ", xi_bytes[i]);
  }
}

void toHexNumber(const char* xi_text, uint32_t xi_count, uint8_t* xo_bytes) {
  const size_t length = std::strlen(xi_text);
  for (uint32_t i = 0; i < xi_count; i++) {
    unsigned value = 0;
    if (3 * size_t{i} < length) {
      std::sscanf(xi_text + 3 * size_t{i}, "%02X", &value);
    }
    xo_bytes[i] = static_cast<uint8_t>(value);
  }
}

const char* filler(char xi_fillCharacter, uint8_t xi_width) {
  static char fillLine[80];
  const size_t width = min<size_t>(xi_width, sizeof fillLine - 1);
  std::memset(fillLine, xi_fillCharacter, width);
  fillLine[width] = '\0';
  return fillLine;
}

BufferedSession::BufferedSession(cli_def* cli) : cli_(cli) {
  if (cli->client == nullptr || cli->client == bufferedStream) {
    return;
  }
  const int descriptor = dup(fileno(cli->client));
  bufferedStream = descriptor < 0 ? nullptr : fdopen(descriptor, "w");
  if (bufferedStream == nullptr) {
    if (descriptor >= 0) {
      close(descriptor);
    }
    return;  // slower, and no less right
  }
  std::setvbuf(bufferedStream, streamBuffer, _IOFBF, sizeof streamBuffer);
  session_ = cli->client;
  cli->client = bufferedStream;
}

BufferedSession::~BufferedSession() {
  if (session_ == nullptr) {
    flushSession(cli_);
    return;
  }
  cli_->client = session_;
  std::fclose(bufferedStream);
  bufferedStream = nullptr;
}

void flushSession(cli_def* cli) {
  if (cli->client != nullptr) {
    std::fflush(cli->client);
  }
}

bool sleepInSession(cli_def* cli, std::chrono::seconds duration) {
  flushSession(cli);
  if (cli->client != nullptr) {
    return clockSource().sleepWhileConnected(fileno(cli->client), duration);
  }
  clockSource().sleep(duration);
  return true;
}

bool sessionLost(const cli_def* cli) {
  if (cli->client == nullptr) {
    return false;
  }
  pollfd peer{fileno(cli->client), 0, 0};
  return poll(&peer, 1, 0) > 0;
}

void printLater(const char* text) {
  WaitingLines& waiting = waitingLines();
  const std::lock_guard guard(waiting.lock);
  if (waiting.lines.size() < kMostWaiting) {
    waiting.lines.emplace_back(text);
  }
}

bool printWaiting(cli_def* cli) {
  std::vector<std::string> lines;
  {
    WaitingLines& waiting = waitingLines();
    const std::lock_guard guard(waiting.lock);
    lines.swap(waiting.lines);
  }
  for (const std::string& line : lines) {
    cli_print(cli, "%s", line.c_str());
  }
  return !lines.empty();
}

void forgetWaiting() {
  WaitingLines& waiting = waitingLines();
  const std::lock_guard guard(waiting.lock);
  waiting.lines.clear();
}
