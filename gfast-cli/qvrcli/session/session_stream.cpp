#include "qvrcli/session/session_stream.h"

#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "clock/clock.h"
#include "qvrcli/session/libcli_structs.h"
#include "qvrcli/session/stop.h"
#include "qvrcli/session/turn.h"

namespace gfast::console {

namespace {

// The buffered stream that takes the place of the session's while a command runs.
FILE* bufferedStream = nullptr;
char streamBuffer[16 * 1024];

// A burst of log lines between two looks; some 100 bytes each.
constexpr size_t kMostWaitingLines = 5000;  // lines

struct WaitingLines {
  std::mutex lock;
  std::vector<std::string> lines;
  size_t lost = 0;  // for which there was no room behind these
};

// Never destroyed: the notification thread may still print while the process exits.
WaitingLines& waitingLines() {
  static auto& waiting = *new WaitingLines;
  return waiting;
}

}  // namespace

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
    return;  // the command writes to the unbuffered stream: slower, but the same text
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
  const TurnLent lent;
  return clockSource().sleepWhile(duration, [cli] { return mayGoOn(cli); });
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
  if (waiting.lines.size() < kMostWaitingLines) {
    waiting.lines.emplace_back(text);
  } else {
    waiting.lost++;
  }
}

bool linesWait() {
  WaitingLines& waiting = waitingLines();
  const std::lock_guard guard(waiting.lock);
  return !waiting.lines.empty();
}

bool printWaiting(cli_def* cli) {
  std::vector<std::string> lines;
  size_t lost = 0;
  {
    WaitingLines& waiting = waitingLines();
    const std::lock_guard guard(waiting.lock);
    lines.swap(waiting.lines);
    lost = std::exchange(waiting.lost, 0);
  }
  for (const std::string& line : lines) {
    cli_print(cli, "%s", line.c_str());
  }
  if (lost > 0) {
    cli_print(cli, "%zu lines lost", lost);
  }
  return !lines.empty();
}

void forgetWaiting() {
  WaitingLines& waiting = waitingLines();
  const std::lock_guard guard(waiting.lock);
  waiting.lines.clear();
  waiting.lost = 0;
}

}  // namespace gfast::console
