// Ends what runs in a session or a script before it has ended by itself.
#pragma once

#include <libcli.h>

#include <optional>

#include "qvrcli/session/turn.h"

namespace gfast::console {

// Whether what runs may go on. It may not when its session is lost, when Ctrl-C was typed meanwhile, or, for
// a script without a session, when nobody reads standard output any more. Whatever waits or repeats asks it;
// one system call or two.
bool mayGoOn(cli_def* cli);

// The same for the library's waits, on any thread: only the command thread's may have to end.
bool commandMayGoOn();

// Whether Ctrl-C was typed while the present command runs. What that still prints is not shown.
bool interrupted();

// Exists while a command runs, also for each that a script runs. The outermost has the command's turn, ends
// the interruption, and says so in one line.
class RunningCommand {
 public:
  explicit RunningCommand(cli_def* cli);
  ~RunningCommand();
  RunningCommand(const RunningCommand&) = delete;
  RunningCommand& operator=(const RunningCommand&) = delete;

 private:
  cli_def* cli_;
  std::optional<CommandTurn> turn_;
};

}  // namespace gfast::console
