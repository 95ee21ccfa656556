#include "qvrcli/session/log_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <thread>

namespace gfast::console {

namespace {

constexpr size_t kLogLineSize = 1024;
constexpr int kMode = 0640;  // others need not know who connects

// For the handler of a signal, and never freed.
const char* logFile;

void report(const char* where) {
  std::fprintf(stderr, "GFAST_LOG=%s: %s\n", where, std::strerror(errno));
}

// Moves a descriptor's place to standard output's.
void becomeStandardOutput(int descriptor) {
  if (descriptor != STDOUT_FILENO) {
    dup2(descriptor, STDOUT_FILENO);
    close(descriptor);
  }
}

// Calls only what a handler of a signal may call. False with errno when the file cannot be opened.
bool openLogFile() {
  // A pipe without a reader would keep open waiting.
  const int file = open(logFile, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kMode);
  if (file < 0) {
    return false;
  }
  struct stat status {};
  if (fstat(file, &status) < 0 || !S_ISREG(status.st_mode)) {
    close(file);
    errno = EINVAL;
    return false;
  }
  becomeStandardOutput(file);
  return true;
}

void openLogFileAgain(int /*signal*/) {
  const int before = errno;
  openLogFile();
  errno = before;
}

// A signal ends many waits early, so one thread takes it that does nothing else.
void openAgainAtHangup() {
  struct sigaction action {};
  action.sa_handler = openLogFileAgain;
  action.sa_flags = SA_RESTART;
  sigaction(SIGHUP, &action, nullptr);
  sigset_t hangup;
  sigemptyset(&hangup);
  sigaddset(&hangup, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &hangup, nullptr);
  try {
    std::thread([hangup] {
      pthread_sigmask(SIG_UNBLOCK, &hangup, nullptr);
      for (;;) {
        pause();
      }
    }).detach();
  } catch (const std::system_error&) {
    pthread_sigmask(SIG_UNBLOCK, &hangup, nullptr);
  }
}

void logToFile(const std::string& name) {
  logFile = (new std::string(name))->c_str();
  // A file that may grow no longer would end the program.
  std::signal(SIGXFSZ, SIG_IGN);
  if (!openLogFile()) {
    report(logFile);
  }
  openAgainAtHangup();
}

void sayToSystem(const char* line) {
  syslog(LOG_INFO, "%s", line);
}

// A process of its own: it still passes on what the console printed before a fault, and when the system's log
// does not take anything, it waits and not the console.
void logToSystem() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) < 0) {
    report("syslog");
    return;
  }
  const pid_t logger = fork();
  if (logger < 0) {
    report("syslog");
    close(ends[0]);
    close(ends[1]);
    return;
  }
  if (logger == 0) {
    close(ends[1]);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
      std::signal(signal, SIG_IGN);  // it ends when the console has
    }
    // C libraries differ in what they call a program by themselves.
    openlog(program_invocation_short_name, 0, LOG_DAEMON);
    sayLines(ends[0], sayToSystem);
    _exit(0);
  }
  close(ends[0]);
  fcntl(ends[1], F_SETFL, O_NONBLOCK);
  becomeStandardOutput(ends[1]);
}

}  // namespace

void logTo(const std::string& where) {
  std::fflush(stdout);
  if (where == "syslog") {
    logToSystem();
  } else {
    logToFile(where);
  }
}

void sayLines(int descriptor, void (*say)(const char* line)) {
  FILE* const lines = fdopen(descriptor, "r");
  if (lines == nullptr) {
    return;
  }
  std::array<char, kLogLineSize> line{};
  while (std::fgets(line.data(), line.size(), lines) != nullptr) {
    line[std::strcspn(line.data(), "\r\n")] = '\0';
    if (line[0] != '\0') {
      say(line.data());
    }
  }
  std::fclose(lines);
}

}  // namespace gfast::console
