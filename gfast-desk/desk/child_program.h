// The program that is run, and what it leaves behind.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "gfast-desk/desk/open_files.h"

namespace gfast::desk {

class ChildProgram {
 public:
  // A process whose system calls are already shown to a listener here. Throws std::runtime_error when this
  // machine cannot do it.
  explicit ChildProgram(const std::vector<std::string>& command);
  // Ends it, and what it left running.
  ~ChildProgram();
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;

  const std::string& name() const { return command_.front(); }
  pid_t process() const { return process_; }
  int listener() const { return listener_.number(); }

  // Lets it become the command: 0, or the errno that kept the command from starting.
  int execute();

  // Readable when a signal has come.
  int signals() const { return signals_.number(); }

  // Passes a signal on, or collects children that have ended: the program's status, as waitpid gives it, once
  // it is among them.
  std::optional<int> handleSignal();

 private:
  void catchSignals();
  [[noreturn]] void becomeProgram(pid_t parent, int link);
  void fetchListener();
  std::optional<int> collect() const;

  std::vector<std::string> command_;
  struct sigaction childAction_ {};  // as this process was started with
  sigset_t mask_{};                  // likewise
  Descriptor link_;                  // to the child, until it has become the program
  Descriptor signals_;
  Descriptor listener_;
  pid_t process_ = -1;
};

}  // namespace gfast::desk
