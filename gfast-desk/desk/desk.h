// Runs a program whose system calls on the chips' device files are answered by a driver in this process.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "driver/driver.h"

namespace gfast::desk {

constexpr int kCannotServe = 2;  // exit status: this machine or that program cannot be served
constexpr int kCannotExecute = 126;
constexpr int kNoSuchProgram = 127;
constexpr int kKilledBySignal = 128;  // and the signal's number

class ChildProgram;

// One in a process: it collects every child that ends, those of the program's that have lost their parent
// included.
class Desk {
 public:
  // Makes the process that will run the command. To be made before this process has threads. Throws
  // std::runtime_error when this machine cannot serve a program.
  explicit Desk(const std::vector<std::string>& command);
  // Ends what the program left running.
  ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  // Runs the command, found as a shell finds it, to its end. The program's exit status; 128 and the number of
  // the signal that killed it; or one of the above, of which one line on standard error has told the reason.
  int run(Driver& board);

 private:
  std::unique_ptr<ChildProgram> program_;
};

}  // namespace gfast::desk
