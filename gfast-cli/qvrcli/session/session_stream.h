// The session's stream: buffered while a command runs, asked whether its peer is still there, and lent to
// other threads that have something to say.
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
  FILE* session_ = nullptr;  // libcli's own stream while ours stands in its place
};

// Sends what is buffered: before anything that waits, so the operator sees what happened so far.
void flushSession(cli_def* cli);

// Sends what is buffered and sleeps. False when the session was lost meanwhile, which ends the sleep: nobody
// is left to wait for, and the next client must be served.
bool sleepInSession(cli_def* cli, std::chrono::seconds duration);

// Whether the session's peer can no longer be reached; without a session, false. A peer that only has nothing
// more to say is still there.
bool sessionLost(const cli_def* cli);

// Has the command thread print a line to the session: for every other thread, because the interpreter prints
// on one thread only. Lines wait for the end of the running command or for the idle interpreter's next look,
// a few seconds at most; a flood is cut at 100.
void printLater(const char* text);

// Prints what printLater was given; on the command thread. False when there was nothing.
bool printWaiting(cli_def* cli);

// Drops what printLater was given: it was meant for those who were there.
void forgetWaiting();

}  // namespace gfast::console
