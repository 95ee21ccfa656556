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
constexpr uint64_t kNanosecondsInMicrosecond = 1000;
constexpr uint64_t kNever_us = std::numeric_limits<uint64_t>::max();

// How long a command waits at most for the notification thread.
constexpr std::chrono::seconds kPatience{1};

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

bool isRecordRead(TraceKind kind) {
  return kind == TraceKind::kEventRead || kind == TraceKind::kLogRead;
}

// Set to 0 a timer never ends, so what is due already ends as soon as it can.
itimerspec timerFor(uint64_t left_us) {
  itimerspec timer{};
  timer.it_value.tv_sec = static_cast<time_t>(left_us / kSecond_us);
  timer.it_value.tv_nsec = static_cast<long>(left_us % kSecond_us * kNanosecondsInMicrosecond);
  if (left_us == 0) {
    timer.it_value.tv_nsec = 1;
  }
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
  const Timed timed{exchange.time_us, std::move(exchange.answer)};
  if (!isRecordRead(exchange.request.kind)) {
    series_[std::move(exchange.request)][indexOf(exchange.thread)].answers.push_back(timed);
    return;
  }
  Pending& pending = pending_[exchange.request.device];
  // That nothing is pending needs no answer of its own.
  if (timed.answer->error != 0 || !timed.answer->returned.empty()) {
    (exchange.request.kind == TraceKind::kEventRead ? pending.events : pending.logs).push_back(timed);
  }
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
    setTimers();
  }
  return descriptor;
}

void ReplayedBoard::close(int descriptor) {
  const std::lock_guard lock(mutex_);
  if (devices_.erase(descriptor) != 0) {
    ::close(descriptor);
  }
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
  const Answer answer = isRecordRead(asked.kind) ? takeRecord(asked) : answerTo(lock, asked);
  if (answer == nullptr) {
    lock.unlock();
    report(asked);
    return failWith(ENODATA);
  }
  if (asked.kind == TraceKind::kLogCfg && answer->error == 0) {
    pending_[asked.device].logging = true;
    setTimers();
  }
  return give(*answer, code, request);
}

uint64_t ReplayedBoard::clock_us() {
  const std::lock_guard lock(mutex_);
  return now();
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
  if (const uint64_t reached = now(); reached < time_us) {
    skipped_us_ += time_us - reached;
    setTimers();
  }
  if (!handled_.wait_for(lock, kPatience, [this, time_us] { return eventsAreHandled(time_us); })) {
    givenUp_us_ = std::max(givenUp_us_, time_us);
  }
}

// Whether the notification thread has done with the events up to this time.
bool ReplayedBoard::eventsAreHandled(uint64_t time_us) const {
  const auto isOver = [this, time_us](uint64_t event_us) {
    return event_us > time_us || event_us <= givenUp_us_;
  };
  return std::ranges::all_of(devices_, [this, &isOver](const auto& open) {
    const auto found = pending_.find(open.second);
    if (found == pending_.end()) {
      return true;
    }
    const Pending& pending = found->second;
    return (pending.events.empty() || isOver(pending.events.front().time_us)) &&
           (!pending.handled_us || isOver(*pending.handled_us));
  });
}

ReplayedBoard::Answer ReplayedBoard::takeRecord(const TraceRequest& request) {
  static const Answer none = std::make_shared<const TraceAnswer>();
  Pending& pending = pending_[request.device];
  const bool event = request.kind == TraceKind::kEventRead;
  std::deque<Timed>& records = event ? pending.events : pending.logs;
  const bool due = !records.empty() && records.front().time_us <= now();
  if (event) {
    pending.handled_us = due ? std::optional(records.front().time_us) : std::nullopt;
    handled_.notify_all();
  }
  if (!due) {
    return none;
  }
  const Answer answer = std::move(records.front().answer);
  records.pop_front();
  setTimers();
  return answer;
}

// A descriptor becomes readable when its device's next record is due. A timer that is set again is not
// readable any more.
void ReplayedBoard::setTimers() {
  const uint64_t reached = now();
  for (const auto& [descriptor, device] : devices_) {
    const uint64_t next = nextRecord_us(device);
    const itimerspec timer = next == kNever_us ? itimerspec{} : timerFor(next > reached ? next - reached : 0);
    ::timerfd_settime(descriptor, 0, &timer, nullptr);
  }
}

uint64_t ReplayedBoard::nextRecord_us(int device) const {
  const auto found = pending_.find(device);
  if (found == pending_.end()) {
    return kNever_us;
  }
  const Pending& pending = found->second;
  const uint64_t event = pending.events.empty() ? kNever_us : pending.events.front().time_us;
  const uint64_t log = pending.logs.empty() || !pending.logging ? kNever_us : pending.logs.front().time_us;
  return std::min(event, log);
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
