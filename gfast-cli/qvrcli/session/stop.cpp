#include "qvrcli/session/stop.h"

#include <poll.h>
#include <unistd.h>

#include "qvrcli/session/session_stream.h"

namespace gfast::console {

namespace {

int depth = 0;  // of the commands that run
bool interruption = false;

bool standardOutputLost() {
  pollfd output{STDOUT_FILENO, 0, 0};
  return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

}  // namespace

bool mayGoOn(cli_def* cli) {
  if (interruption) {
    return false;
  }
  return cli->client == nullptr ? !standardOutputLost() : !sessionLost(cli);
}

bool interrupted() {
  return interruption;
}

RunningCommand::RunningCommand(cli_def* cli) : cli_(cli) {
  depth++;
}

RunningCommand::~RunningCommand() {
  depth--;
  if (depth == 0 && interruption) {
    interruption = false;
    cli_error(cli_, "Interrupted");
  }
}

}  // namespace gfast::console
