#include "qvrcli/session/stop.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string_view>
#include <thread>

#include "clock/clock.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/session/typed_input.h"

namespace gfast::console {

namespace {

int depth = 0;                               // of the commands that run
std::atomic<std::thread::id> commandThread;  // the library asks on any thread
cli_def* interpreter = nullptr;              // of the commands that run
bool interruption = false;

bool standardOutputLost() {
  pollfd output{STDOUT_FILENO, 0, 0};
  return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

// Looks for an interrupt in what was typed since the command began, and throws that away up to the interrupt,
// as terminals do.
bool takeInterrupt(int session) {
  static char typed[64 * 1024];
  const ssize_t count = recv(session, typed, sizeof typed, MSG_PEEK | MSG_DONTWAIT);
  if (count <= 0) {
    return false;
  }
  const size_t found = std::string_view(typed, static_cast<size_t>(count)).rfind(TypedInput::kInterrupt);
  return found != std::string_view::npos &&
         recv(session, typed, found + TypedInput::kInterrupt.size(), MSG_DONTWAIT) > 0;
}

}  // namespace

bool mayGoOn(cli_def* cli) {
  if (cli->client == nullptr) {
    return !standardOutputLost();
  }
  if (depth > 0 && !interruption) {
    interruption = takeInterrupt(fileno(cli->client));
  }
  return !interruption && !sessionLost(cli);
}

bool commandMayGoOn() {
  return std::this_thread::get_id() != commandThread || depth == 0 || mayGoOn(interpreter);
}

bool interrupted() {
  return interruption;
}

RunningCommand::RunningCommand(cli_def* cli) : cli_(cli) {
  commandThread = std::this_thread::get_id();
  interpreter = cli;
  depth++;
}

RunningCommand::~RunningCommand() {
  clockSource().letOthersCatchUp([this] { return mayGoOn(cli_); });
  depth--;
  if (depth == 0 && interruption) {
    interruption = false;
    cli_error(cli_, "Interrupted");
  }
}

}  // namespace gfast::console
