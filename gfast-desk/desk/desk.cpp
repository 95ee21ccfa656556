#include "gfast-desk/desk/desk.h"

#include <poll.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <optional>

#include "gfast-desk/desk/child_program.h"
#include "gfast-desk/desk/open_files.h"
#include "gfast-desk/desk/system_calls.h"

namespace gfast::desk {

namespace {

int exitStatus(int status) {
  return WIFSIGNALED(status) ? kKilledBySignal + WTERMSIG(status) : WEXITSTATUS(status);
}

// Until the program has ended: its status, as waitpid gives it.
int attend(ChildProgram& program, OpenFiles& files, SystemCalls& calls) {
  pollfd sources[] = {
      {program.listener(), POLLIN, 0}, {program.signals(), POLLIN, 0}, {files.attention(), POLLIN, 0}};
  auto& [listener, signals, attention] = sources;
  std::optional<int> ended;
  while (!ended) {
    if (::poll(sources, std::size(sources), -1) < 0) {
      continue;
    }
    if ((listener.revents & POLLIN) != 0) {
      calls.receive();
    } else if (listener.revents != 0) {
      listener.fd = -1;  // nobody is left who could call
    }
    if (attention.revents != 0) {
      files.attend();
    }
    if (signals.revents != 0) {
      ended = program.handleSignal();
    }
  }
  return *ended;
}

}  // namespace

Desk::Desk(const std::vector<std::string>& command) : program_(std::make_unique<ChildProgram>(command)) {}

Desk::~Desk() = default;

int Desk::run(Driver& board) {
  OpenFiles files(board);
  SystemCalls calls(files, program_->listener());
  if (const int error = program_->execute(); error != 0) {
    std::fprintf(stderr, "gfast-desk: %s: %s\n", program_->name().c_str(), std::strerror(error));
    return error == ENOENT ? kNoSuchProgram : kCannotExecute;
  }
  const int status = attend(*program_, files, calls);
  const bool foreign = calls.foreigner() == program_->process();
  return foreign && WIFSIGNALED(status) ? kCannotServe : exitStatus(status);
}

}  // namespace gfast::desk
