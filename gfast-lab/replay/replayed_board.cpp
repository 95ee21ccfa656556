#include "gfast-lab/replay/replayed_board.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <utility>

#include "driver/request_buffer.h"
#include "driver/trace_blanks.h"

namespace gfast::replay {

namespace {

constexpr uint64_t kSecond_us = 1000000;
constexpr uint64_t kLongest_us = 3600 * kSecond_us;  // of a timer; whoever waits looks again before
constexpr uint64_t kNever_us = std::numeric_limits<uint64_t>::max();

// How long a command waits at most for the notification thread, once for each of its rounds.
constexpr std::chrono::milliseconds kPatience{3000};
constexpr std::chrono::milliseconds kPatienceOnceLost{10};  // until the thread has taken something again

// So many requests that the trace does not hold are named, each once.
constexpr size_t kMostReported = 1000;

constexpr size_t kCommand = 0;
constexpr size_t kNotification = 1;

size_t indexOf(TraceThread thread) {
  return thread == TraceThread::kCommand ? kCommand : kNotification;
}

ReplayedBoard::TimeSource realTime() {
  return [start = std::chrono::steady_clock::now()] {
    const auto passed = std::chrono::steady_clock::now() - start;
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(passed).count());
  };
}

int failWith(int error) {
  errno = error;
  return -1;
}

// Puts the answer's bytes where the caller wants them.
int give(const TraceAnswer& answer, uint32_t code, gfast_iocreq& request) {
  const RequestBuffer buffer = requestBuffer(code, request);
  uint32_t count = 0;
  if (buffer.copied != nullptr && *buffer.field != nullptr) {
    count = static_cast<uint32_t>(std::min<size_t>(answer.returned.size(), buffer.size));
    std::copy_n(answer.returned.begin(), count, *buffer.field);
  }
  for (uint32_t* const field : {buffer.copied, buffer.received}) {
    if (field != nullptr) {
      *field = count;
    }
  }
  return answer.error == 0 ? 0 : failWith(answer.error);
}

// When a timer ends that is set now. What is due already comes a little later, so that several timers end
// together.
itimerspec timerFor(uint64_t left_us) {
  constexpr uint64_t least_us = 50;
  constexpr uint64_t nanosecondsInMicrosecond = 1000;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  const uint64_t end_us = static_cast<uint64_t>(now.tv_nsec) / nanosecondsInMicrosecond +
                          std::clamp(left_us, least_us, kLongest_us);
  itimerspec timer{};
  timer.it_value.tv_sec = now.tv_sec + static_cast<time_t>(end_us / kSecond_us);
  timer.it_value.tv_nsec = static_cast<long>(end_us % kSecond_us * nanosecondsInMicrosecond);
  return timer;
}

// The first bytes that a request sends, as they stand in a trace.
std::string firstOf(const std::vector<uint8_t>& sent) {
  constexpr size_t most = 16;
  constexpr const char* digits = "0123456789abcdef";
  std::string text = sent.empty() ? "" : " > ";
  for (size_t i = 0; i < std::min(sent.size(), most); i++) {
    text += digits[sent[i] >> 4U];
    text += digits[sent[i] & 0xFU];
  }
  return sent.size() > most ? text + "..." : text;
}

}  // namespace

ReplayedBoard::ReplayedBoard(FieldTrace&& trace, Report report, TimeSource time)
    : time_(time ? std::move(time) : realTime()), report_(std::move(report)), blanked_(trace.blanked) {
  for (TracedExchange& exchange : trace.exchanges) {
    sort(std::move(exchange));
  }
}

ReplayedBoard::~ReplayedBoard() {
  for (const auto& [descriptor, device] : devices_) {
    ::close(descriptor);
  }
}

void ReplayedBoard::sort(TracedExchange&& exchange) {
  if (RecordTape::answers(exchange.request.kind)) {
    tape_.add(exchange);
    return;
  }
  series_[std::move(exchange.request)][indexOf(exchange.thread)].answers.push_back(
      {exchange.time_us, std::move(exchange.answer)});
}

int ReplayedBoard::open(int device) {
  const TraceRequest asked{TraceKind::kOpen, device};
  std::unique_lock lock(mutex_);
  const Answer answer = answerTo(lock, asked);
  if (answer == nullptr) {
    lock.unlock();
    report(asked);
    return failWith(ENODATA);
  }
  if (answer->error != 0) {
    return failWith(answer->error);
  }
  const int descriptor = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  if (descriptor >= 0) {
    devices_[descriptor] = device;
    tape_.setOpen(device, true);
    setTimers();
  }
  return descriptor;
}

void ReplayedBoard::close(int descriptor) {
  const std::lock_guard lock(mutex_);
  const auto closed = devices_.find(descriptor);
  if (closed == devices_.end()) {
    return;
  }
  const int device = closed->second;
  devices_.erase(closed);
  ::close(descriptor);
  tape_.setOpen(device,
                std::ranges::any_of(devices_, [device](const auto& open) { return open.second == device; }));
}

int ReplayedBoard::request(int descriptor, uint32_t code, gfast_iocreq& request) {
  std::unique_lock lock(mutex_);
  const auto device = devices_.find(descriptor);
  if (device == devices_.end()) {
    return failWith(EBADF);
  }
  TraceRequest asked = traceRequest(device->second, code, request);
  if (blanked_) {
    blankRequest(asked);
  }
  const Answer answer = RecordTape::answers(asked.kind) ? takeRecord(asked) : answerTo(lock, asked);
  if (answer == nullptr) {
    lock.unlock();
    report(asked);
    return failWith(ENODATA);
  }
  if (asked.kind == TraceKind::kLogCfg && answer->error == 0) {
    tape_.setLogging(asked.device);
    setTimers();
  }
  return give(*answer, code, request);
}

uint64_t ReplayedBoard::clock_us() {
  const std::lock_guard lock(mutex_);
  return now();
}

bool ReplayedBoard::pass(std::chrono::microseconds duration) {
  if (!onCommandThread()) {
    return false;
  }
  std::unique_lock lock(mutex_);
  jumpTo(lock, now() + static_cast<uint64_t>(std::max<int64_t>(duration.count(), 0)));
  return true;
}

// Null: the trace holds no such request.
ReplayedBoard::Answer ReplayedBoard::answerTo(std::unique_lock<std::mutex>& lock,
                                              const TraceRequest& request) {
  const auto found = series_.find(request);
  if (found == series_.end()) {
    return nullptr;
  }
  const size_t self = onCommandThread() ? kCommand : kNotification;
  Series& own = found->second[self];
  return own.answers.empty() ? latestOf(found->second[1 - self]) : nextOf(lock, own);
}

ReplayedBoard::Answer ReplayedBoard::nextOf(std::unique_lock<std::mutex>& lock, Series& own) {
  if (own.next == own.answers.size()) {
    return own.answers.back().answer;
  }
  const Timed& timed = own.answers[own.next++];
  if (onCommandThread()) {
    jumpTo(lock, timed.time_us);
  }
  return timed.answer;
}

ReplayedBoard::Answer ReplayedBoard::latestOf(const Series& other) const {
  const auto later = std::ranges::upper_bound(other.answers, now(), {}, &Timed::time_us);
  return later == other.answers.begin() ? later->answer : std::prev(later)->answer;
}

void ReplayedBoard::jumpTo(std::unique_lock<std::mutex>& lock, uint64_t time_us) {
  for (auto next = tape_.next_us(); next && *next <= time_us; next = tape_.next_us()) {
    skipTo(*next);
    awaitRound(lock);
  }
  awaitRound(lock);
  skipTo(time_us);
}

void ReplayedBoard::awaitRound(std::unique_lock<std::mutex>& lock) {
  const auto patience = attended_ ? kPatience : kPatienceOnceLost;
  attended_ = handled_.wait_for(lock, patience, [this] { return tape_.done(); });
  if (!attended_) {
    tape_.giveUp();
  }
}

void ReplayedBoard::skipTo(uint64_t time_us) {
  if (const uint64_t reached = now(); reached < time_us) {
    skipped_us_ += time_us - reached;
  }
  setTimers();
}

ReplayedBoard::Answer ReplayedBoard::takeRecord(const TraceRequest& request) {
  tape_.advance(now());
  Answer answer = tape_.take(request.kind, request.device);
  setTimers();
  handled_.notify_all();
  return answer;
}

// A descriptor becomes readable when its device has something to say; those of a round together, so that the
// thread that waits for them sees them together. A timer that is set again is not readable any more.
void ReplayedBoard::setTimers() {
  const uint64_t reached = now();
  tape_.advance(reached);
  const uint64_t next = tape_.next_us().value_or(kNever_us);
  const itimerspec soon = timerFor(0);
  const itimerspec later = next == kNever_us ? itimerspec{} : timerFor(next - std::min(next, reached));
  for (const auto& [descriptor, device] : devices_) {
    const itimerspec& timer = tape_.has(device) ? soon : tape_.speaksNext(device) ? later : itimerspec{};
    ::timerfd_settime(descriptor, TFD_TIMER_ABSTIME, &timer, nullptr);
  }
}

void ReplayedBoard::report(const TraceRequest& request) {
  {
    const std::lock_guard lock(mutex_);
    if (reported_.size() >= kMostReported || !reported_.insert(request).second) {
      return;
    }
  }
  report_("the trace holds no answer to: device " + std::to_string(request.device) + ' ' +
          traceWords(request) + firstOf(request.sent));
}

}  // namespace gfast::replay
