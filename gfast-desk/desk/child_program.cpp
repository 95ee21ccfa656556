#include "gfast-desk/desk/child_program.h"

#include <dirent.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "gfast-desk/desk/other_process.h"
#include "gfast-desk/desk/system_call_filter.h"

namespace gfast::desk {

namespace {

// What somebody may send to this process and means for the program.
constexpr int kPassedOn[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGPIPE, SIGALRM};

// Stands in the same place of the child's memory.
volatile int sameInBoth = 0x67666173;

[[noreturn]] void cannotServe(const std::string& what, int error) {
  throw std::runtime_error("this machine cannot answer another program's system calls: " + what + ": " +
                           std::strerror(error));
}

void send(int link, int number) {
  static_cast<void>(!::send(link, &number, sizeof number, MSG_NOSIGNAL));
}

// None: the other end is closed.
std::optional<int> receive(int link) {
  int number = 0;
  ssize_t got = 0;
  do {
    got = ::recv(link, &number, sizeof number, 0);
  } while (got < 0 && errno == EINTR);
  return got == sizeof number ? std::optional(number) : std::nullopt;
}

// A process's parent, or -1.
pid_t parentOf(const std::string& process) {
  std::ifstream file("/proc/" + process + "/stat");
  std::string line;
  std::getline(file, line);
  // "number (name) state parent ...", and the name may hold anything.
  const size_t state = line.rfind(") ");
  return state == std::string::npos || state + 4 > line.size() ? -1 : std::atoi(line.c_str() + state + 4);
}

void killChildren() {
  DIR* const all = ::opendir("/proc");
  if (all == nullptr) {
    return;
  }
  for (const dirent* entry = ::readdir(all); entry != nullptr; entry = ::readdir(all)) {
    if (const int process = std::atoi(entry->d_name); process > 0 && parentOf(entry->d_name) == ::getpid()) {
      ::kill(process, SIGKILL);
    }
  }
  ::closedir(all);
}

}  // namespace

ChildProgram::ChildProgram(const std::vector<std::string>& command) : command_(command) {
  catchSignals();
  // What the program leaves running becomes a child of this process, whose memory this process may read.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    cannotServe("socketpair", errno);
  }
  link_ = Descriptor(ends[0]);
  const Descriptor theirs(ends[1]);
  const pid_t parent = ::getpid();
  process_ = ::fork();
  if (process_ == 0) {
    becomeProgram(parent, theirs.number());
  }
  if (process_ < 0) {
    cannotServe("fork", errno);
  }
  fetchListener();
}

ChildProgram::~ChildProgram() {
  do {
    killChildren();
  } while (::waitpid(-1, nullptr, 0) > 0);
}

// Whoever started this process may ignore the end of children; here it has to be seen.
void ChildProgram::catchSignals() {
  struct sigaction seen {};
  seen.sa_handler = SIG_DFL;
  ::sigaction(SIGCHLD, &seen, &childAction_);
  sigset_t caught;
  sigemptyset(&caught);
  sigaddset(&caught, SIGCHLD);
  for (const int signal : kPassedOn) {
    sigaddset(&caught, signal);
  }
  ::sigprocmask(SIG_BLOCK, &caught, &mask_);
  signals_ = Descriptor(::signalfd(-1, &caught, SFD_CLOEXEC | SFD_NONBLOCK));
}

void ChildProgram::becomeProgram(pid_t parent, int link) {
  std::vector<char*> arguments;
  for (std::string& word : command_) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  // Without this process there is no board.
  ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
  if (::getppid() != parent) {
    ::_exit(0);
  }
  ::sigaction(SIGCHLD, &childAction_, nullptr);
  ::sigprocmask(SIG_SETMASK, &mask_, nullptr);
  const int listener = installFilter();
  send(link, listener < 0 ? -errno : listener);
  if (receive(link)) {
    ::execvp(arguments[0], arguments.data());
    send(link, errno);
  }
  ::_exit(0);
}

void ChildProgram::fetchListener() {
  const auto theirs = receive(link_.number());
  if (!theirs || *theirs < 0) {
    cannotServe("seccomp", theirs ? -*theirs : ESRCH);
  }
  const Descriptor child(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
  listener_ = Descriptor(static_cast<int>(::syscall(SYS_pidfd_getfd, child.number(), *theirs, 0)));
  if (!listener_) {
    cannotServe("pidfd_getfd", errno);
  }
  int seen = 0;
  const auto address = reinterpret_cast<uintptr_t>(&sameInBoth);
  if (!readMemory(process_, address, &seen, sizeof seen) || seen != sameInBoth) {
    cannotServe("process_vm_readv", errno);
  }
}

int ChildProgram::execute() {
  send(link_.number(), 0);
  const int error = receive(link_.number()).value_or(0);
  link_ = Descriptor();
  return error;
}

std::optional<int> ChildProgram::handleSignal() {
  signalfd_siginfo signal{};
  if (::read(signals(), &signal, sizeof signal) != sizeof signal) {
    return std::nullopt;
  }
  if (signal.ssi_signo == SIGCHLD) {
    return collect();
  }
  // What a terminal sends goes to the program as well.
  const bool sent = signal.ssi_code != SI_KERNEL && signal.ssi_pid != static_cast<uint32_t>(::getpid());
  if (sent) {
    ::kill(process_, static_cast<int>(signal.ssi_signo));
  }
  return std::nullopt;
}

std::optional<int> ChildProgram::collect() const {
  std::optional<int> ended;
  int status = 0;
  for (pid_t child = 0; (child = ::waitpid(-1, &status, WNOHANG)) > 0;) {
    if (child == process_) {
      ended = status;
    }
  }
  return ended;
}

}  // namespace gfast::desk
