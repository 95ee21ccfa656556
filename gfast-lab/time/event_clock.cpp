#include "gfast-lab/time/event_clock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace gfast::lab {

namespace {

using std::chrono::microseconds;

constexpr double kSecond_us = 1e6;

// How often a thread that waits asks whether to go on, by real time.
constexpr std::chrono::milliseconds kAskInterval{200};

double secondsOf(microseconds time) {
  return static_cast<double>(time.count()) / kSecond_us;
}

// The first microsecond at which an event of that time is due.
microseconds whenDue(double time_s) {
  microseconds due{static_cast<int64_t>(std::floor(time_s * kSecond_us))};
  while (secondsOf(due) < time_s) {
    ++due;
  }
  return due;
}

int countReadable(const fd_set& descriptors, int limit, fd_set& readable) {
  readable = descriptors;
  timeval none{};
  return std::max(0, ::select(limit, &readable, nullptr, nullptr, &none));
}

}  // namespace

double EventClock::elapsed_s() {
  return secondsOf(steady());
}

time_t EventClock::now() {
  return start_ + static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(steady()).count());
}

microseconds EventClock::steady() {
  const std::lock_guard lock(timeMutex_);
  return time_;
}

void EventClock::setTime(microseconds time) {
  const std::lock_guard lock(timeMutex_);
  time_ = std::max(time_, time);
}

void EventClock::sleep(microseconds duration) {
  Waiting waiting;
  Lock lock(mutex_);
  begin(waiting, duration);
  ended_.wait(lock, [&waiting] { return waiting.over; });
}

int EventClock::waitReadable(fd_set& descriptors, int limit, microseconds duration) {
  Waiting waiting;
  waiting.descriptors = &descriptors;
  waiting.limit = limit;
  Lock lock(mutex_);
  begin(waiting, duration);
  ended_.wait(lock, [&waiting] { return waiting.over; });
  if (waiting.readable == 0) {
    FD_ZERO(&descriptors);
  }
  return waiting.readable;
}

bool EventClock::sleepWhile(microseconds duration, const std::function<bool()>& mayGoOn) {
  if (!mayGoOn()) {
    return false;
  }
  Waiting waiting;
  Lock lock(mutex_);
  begin(waiting, duration);
  while (!ended_.wait_for(lock, kAskInterval, [&waiting] { return waiting.over; })) {
    lock.unlock();
    const bool goesOn = mayGoOn();
    lock.lock();
    if (!goesOn && !waiting.over) {
      end(waiting);
      return false;
    }
  }
  return true;
}

void EventClock::sleepOutside(microseconds duration) {
  std::this_thread::sleep_for(duration);
}

void EventClock::threadStarts() {
  const std::lock_guard lock(mutex_);
  expected_++;
}

void EventClock::begin(Waiting& waiting, microseconds duration) {
  if (threads_.insert(std::this_thread::get_id()).second) {
    computing_++;
  }
  waiting.end = steady() + std::max(duration, microseconds{0});
  waiting.commands = std::this_thread::get_id() == commandThread_;
  waiting_.push_back(&waiting);
  computing_--;
  moveOn();
}

// Moves the time on until a wait is over, unless somebody computes or has not come yet.
void EventClock::moveOn() {
  while (computing_ == 0 && threads_.size() >= expected_) {
    if (Waiting* const readable = findReadable(); readable != nullptr) {
      end(*readable);
      return;
    }
    Waiting& first = firstToEnd();
    if (!passEvent(first.end)) {
      setTime(first.end);
      end(first);
      return;
    }
  }
}

EventClock::Waiting* EventClock::findReadable() {
  for (Waiting* const waiting : waiting_) {
    if (waiting->descriptors == nullptr) {
      continue;
    }
    fd_set readable;
    waiting->readable = countReadable(*waiting->descriptors, waiting->limit, readable);
    if (waiting->readable > 0) {
      *waiting->descriptors = readable;
      return waiting;
    }
  }
  return nullptr;
}

EventClock::Waiting& EventClock::firstToEnd() {
  const auto turn = [](const Waiting* waiting) { return std::pair(waiting->end, waiting->commands); };
  return **std::ranges::min_element(waiting_, {}, turn);
}

// False when no event is due by `latest`.
bool EventClock::passEvent(microseconds latest) {
  const std::optional<double> next = events_.next ? events_.next() : std::nullopt;
  if (!next || *next > secondsOf(latest)) {
    return false;
  }
  setTime(whenDue(*next));
  events_.advance();
  return true;
}

void EventClock::end(Waiting& waiting) {
  waiting_.remove(&waiting);
  waiting.over = true;
  computing_++;
  ended_.notify_all();
}

}  // namespace gfast::lab
