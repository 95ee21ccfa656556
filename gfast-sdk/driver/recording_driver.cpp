#include "driver/recording_driver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <optional>

#include "driver/trace_blanks.h"

using namespace gfast;

namespace {

constexpr const char* kVariable = "GFAST_TRACE";
constexpr const char* kBlankVariable = "GFAST_TRACE_BLANK";

// The requests that are polled are few, and their answers short.
constexpr size_t kMostRemembered = 32;
constexpr size_t kLongestRemembered = 1024;

// Opens the file above the standard streams' numbers, so that nothing printed gets into it. Opening and
// writing must never wait, whatever kind of file it is.
int openTrace(const char* name) {
  const int opened = ::open(name, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0644);
  if (opened < 0 || opened > STDERR_FILENO) {
    return opened;
  }
  const int moved = ::fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  ::close(opened);
  return moved;
}

bool holdsSomething(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

std::string title(bool blanked) {
  using namespace std::chrono;
  const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch());
  const auto whole = static_cast<time_t>(now.count() / microseconds::period::den);
  tm utc{};
  gmtime_r(&whole, &utc);
  char day[32];
  std::strftime(day, sizeof day, " %Y-%m-%dT%H:%M:%S", &utc);
  char fraction[16];
  std::snprintf(fraction, sizeof fraction, ".%06uZ",
                static_cast<unsigned>(now.count() % microseconds::period::den));
  std::string text(kTraceTitle);
  text.append(day).append(fraction);
  if (blanked) {
    text.append(" ").append(kTraceBlanked);
  }
  return text + '\n';
}

// Whoever asked sees the errno of his request, whatever the recording did since.
class KeptErrno {
 public:
  KeptErrno() = default;
  ~KeptErrno() { errno = kept_; }
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;

  int errorOf(int result) const { return result < 0 ? kept_ : 0; }

 private:
  const int kept_ = errno;
};

}  // namespace

int TraceFile::open(const char* name) {
  descriptor_ = openTrace(name);
  if (!isOpen()) {
    return errno;
  }
  if (holdsSomething(descriptor_)) {
    close();
    return EEXIST;
  }
  return 0;
}

int TraceFile::write(std::string_view text) {
  while (isOpen() && !text.empty()) {
    const ssize_t written = ::write(descriptor_, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<size_t>(written));
    } else if (const int error = errno; error != EINTR) {
      close();
      return error;
    }
  }
  return 0;
}

void TraceFile::close() {
  if (const int descriptor = descriptor_.exchange(-1); descriptor >= 0) {
    ::close(descriptor);
  }
}

RecordingDriver::RecordingDriver(Driver& recorded, const std::string& file, bool blanked)
    : recorded_(recorded), name_(file), blanked_(blanked) {
  // A file that may not grow, and a pipe that nobody reads, are to be errors of the writing, not the end of
  // the program.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  int error = file_.open(file.c_str());
  if (error == 0) {
    error = file_.write(title(blanked));
  }
  if (error != 0) {
    report(std::strerror(error));
  }
}

// A board that has no memory left for a trace goes on without one.
template <typename Action>
void RecordingDriver::withoutFailing(Action action) {
  if (!file_.isOpen()) {
    return;
  }
  try {
    action();
  } catch (const std::exception& error) {
    {
      const std::lock_guard lock(mutex_);
      file_.close();
    }
    report(error.what());
  }
}

int RecordingDriver::open(int device) {
  const int descriptor = recorded_.open(device);
  const KeptErrno kept;
  withoutFailing([&] {
    if (descriptor >= 0) {
      remember(descriptor, device);
    }
    write({TraceKind::kOpen, device}, {kept.errorOf(descriptor)});
  });
  return descriptor;
}

int RecordingDriver::request(int descriptor, uint32_t code, gfast_iocreq& request) {
  std::optional<TraceRequest> asked;  // before the driver puts an answer where the request's bytes are
  withoutFailing([&] { asked = traceRequest(deviceOf(descriptor), code, request); });
  const int result = recorded_.request(descriptor, code, request);
  const KeptErrno kept;
  if (asked) {
    withoutFailing([&] { write(std::move(*asked), traceAnswer(code, request, kept.errorOf(result))); });
  }
  return result;
}

void RecordingDriver::close(int descriptor) {
  withoutFailing([&] {
    const int device = deviceOf(descriptor);
    forget(descriptor);  // before the number is free for another device
    write({TraceKind::kClose, device});
  });
  recorded_.close(descriptor);
}

void RecordingDriver::rediscover() {
  withoutFailing([&] { write({TraceKind::kRediscover}); });
  recorded_.rediscover();
}

int RecordingDriver::deviceOf(int descriptor) {
  const std::lock_guard lock(mutex_);
  const auto found = std::ranges::find(devices_, descriptor, &OpenDevice::descriptor);
  return found == devices_.end() ? -1 : found->device;
}

void RecordingDriver::remember(int descriptor, int device) {
  const std::lock_guard lock(mutex_);
  devices_.push_back({descriptor, device});
}

void RecordingDriver::forget(int descriptor) {
  const std::lock_guard lock(mutex_);
  std::erase_if(devices_, [descriptor](const OpenDevice& open) { return open.descriptor == descriptor; });
}

void RecordingDriver::write(TraceRequest&& request, TraceAnswer&& answer) {
  const bool commands = std::this_thread::get_id() == commandThread_;
  Exchange exchange{commands ? TraceThread::kCommand : TraceThread::kNotification, std::move(request),
                    std::move(answer)};
  if (blanked_) {
    blankRequest(exchange.request);
    blankAnswer(exchange.request, exchange.answer);
  }
  int error = 0;
  {
    const std::lock_guard lock(mutex_);
    error = file_.write(nextText(exchange));
  }
  if (error != 0) {
    report(std::strerror(error));
  }
}

std::string RecordingDriver::nextText(const Exchange& exchange) {
  const auto now = std::chrono::steady_clock::now() - start_;
  const auto time_us = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
  return traceText(static_cast<uint64_t>(time_us), exchange.thread, exchange.request,
                   isSame(exchange) ? nullptr : &exchange.answer);
}

// Whether the same thread got the same bytes the last time it asked the same. What was asked longest ago is
// forgotten first.
bool RecordingDriver::isSame(const Exchange& exchange) {
  const auto found = std::ranges::find_if(remembered_, [&exchange](const Exchange& earlier) {
    return earlier.thread == exchange.thread && earlier.request == exchange.request;
  });
  if (found != remembered_.end()) {
    if (found->answer == exchange.answer) {
      std::rotate(found, found + 1, remembered_.end());
      return true;
    }
    remembered_.erase(found);
  }
  const size_t length = exchange.request.sent.size() + exchange.answer.returned.size();
  if (!exchange.answer.returned.empty() && length <= kLongestRemembered) {
    if (remembered_.size() == kMostRemembered) {
      remembered_.erase(remembered_.begin());
    }
    remembered_.push_back(exchange);
  }
  return false;
}

void RecordingDriver::report(const char* reason) const {
  std::fprintf(stderr, "%s: %s: %s; nothing is recorded from now on\n", kVariable, name_.c_str(), reason);
}

Driver& gfast::recordedIfAsked(Driver& driver) {
  const char* const file = std::getenv(kVariable);
  if (file == nullptr || *file == '\0') {
    return driver;
  }
  const char* const blank = std::getenv(kBlankVariable);
  return *new RecordingDriver(driver, file, blank != nullptr && std::strcmp(blank, "1") == 0);
}
