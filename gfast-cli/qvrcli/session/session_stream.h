// The session's stream: buffering it while a command runs, noticing that its peer is gone, and printing lines
// of other threads to it.
#pragma once

#include <libcli.h>

#include <chrono>

namespace gfast::console {

// Buffers the session's stream for the length of a command; without a session it does nothing. A command that
// a script runs shares the buffer of the command that runs the script, and is sent when it ends.
class BufferedSession {
 public:
  explicit BufferedSession(cli_def* cli);
  ~BufferedSession();
  BufferedSession(const BufferedSession&) = delete;
  BufferedSession& operator=(const BufferedSession&) = delete;

 private:
  cli_def* cli_;
  FILE* session_ = nullptr;  // libcli's own stream, while the buffered one takes its place
};

// Sends what is buffered. To be called before anything that waits, so that the operator sees what has
// happened so far.
void flushSession(cli_def* cli);

// Sends what is buffered and sleeps. Ends early and returns false when the command may not go on.
bool sleepInSession(cli_def* cli, std::chrono::seconds duration);

// Whether the session's peer can no longer be reached; false without a session. A peer that has closed its
// sending side only can still be reached.
bool sessionLost(const cli_def* cli);

// Keeps a line until the command thread prints it to the session. For all other threads, because only the
// command thread may print through the interpreter. It is printed when the running command ends or, when none
// runs, within a few seconds. At most 5000 lines wait; of those that come then, the number is printed.
void printLater(const char* text);

// Whether lines wait.
bool linesWait();

// Prints the lines that wait. On the command thread. False when there were none.
bool printWaiting(cli_def* cli);

// Drops the lines that wait: they were meant for an earlier session.
void forgetWaiting();

}  // namespace gfast::console
