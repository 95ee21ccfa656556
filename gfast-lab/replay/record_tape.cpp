#include "gfast-lab/replay/record_tape.h"

#include <algorithm>
#include <utility>

namespace gfast::replay {

namespace {

// Longer than that thread waits when a descriptor was closed under it.
constexpr std::chrono::seconds kStuckAfter{2};

// Where in a round the reading of these records comes.
int rankOf(TraceKind kind, int device) {
  constexpr int devices = 10;
  return kind == TraceKind::kEventRead ? device : devices + device;
}

}  // namespace

void RecordTape::add(const TracedExchange& exchange) {
  const TraceRequest& request = exchange.request;
  const TraceAnswer& answer = *exchange.answer;
  const int rank = rankOf(request.kind, request.device);
  if (rounds_us_.empty() || rank < lastRank_ || (rank == lastRank_ && lastEnded_)) {
    rounds_us_.push_back(exchange.time_us);
  }
  lastRank_ = rank;
  lastEnded_ = answer.returned.empty();
  // That nothing is pending needs no answer of its own.
  if (answer.error != 0 || !answer.returned.empty()) {
    records_.push_back({rounds_us_.size() - 1, request.kind, request.device, exchange.answer});
  }
}

void RecordTape::advance(uint64_t now_us) {
  const auto now = std::chrono::steady_clock::now();
  while (end_ < records_.size() && rounds_us_[records_[end_].round] <= now_us &&
         (front_ == end_ || now - moved_ > kStuckAfter)) {
    putAside(end_);
    end_ = endOfRound(end_);
    moved_ = now;
    passUnwanted();
  }
}

void RecordTape::passUnwanted() {
  while (front_ < end_ && !isWanted(records_[front_])) {
    putAside(front_ + 1);
  }
}

void RecordTape::putAside(size_t end) {
  for (; front_ < end; front_++) {
    devices_[records_[front_].device].aside.push_back(std::move(records_[front_]));
  }
}

RecordTape::Answer RecordTape::take(TraceKind kind, int device) {
  static const Answer none = std::make_shared<const TraceAnswer>();
  Device& from = devices_[device];
  const auto matches = [kind, device](const Record& record) {
    return record.kind == kind && record.device == device;
  };
  Answer answer = none;
  if (const auto aside = std::ranges::find_if(from.aside, matches); aside != from.aside.end()) {
    answer = std::move(aside->answer);
    from.aside.erase(aside);
  } else if (front_ < end_ && matches(records_[front_])) {
    answer = std::move(records_[front_++].answer);
    moved_ = std::chrono::steady_clock::now();
    passUnwanted();
  }
  // Whoever got something asks again; an error he takes for the end.
  from.handling = answer != none && answer->error == 0;
  return answer;
}

bool RecordTape::has(int device) const {
  const auto speaks = [&](const Record& record) { return record.device == device && isWanted(record); };
  const auto found = devices_.find(device);
  const auto place = [this](size_t index) { return records_.begin() + static_cast<std::ptrdiff_t>(index); };
  return (found != devices_.end() && std::ranges::any_of(found->second.aside, speaks)) ||
         std::any_of(place(front_), place(end_), speaks);
}

bool RecordTape::isWanted(const Record& record) const {
  const auto found = devices_.find(record.device);
  return found != devices_.end() && found->second.open &&
         (record.kind == TraceKind::kEventRead || found->second.logging);
}

size_t RecordTape::endOfRound(size_t record) const {
  const size_t round = records_[record].round;
  while (record < records_.size() && records_[record].round == round) {
    record++;
  }
  return record;
}

size_t RecordTape::nextWanted() const {
  size_t next = end_;
  while (next < records_.size() && !isWanted(records_[next])) {
    next++;
  }
  return next;
}

std::optional<uint64_t> RecordTape::next_us() const {
  const size_t next = nextWanted();
  return next < records_.size() ? std::optional(rounds_us_[records_[next].round]) : std::nullopt;
}

bool RecordTape::speaksNext(int device) const {
  for (size_t next = nextWanted(), end = next < records_.size() ? endOfRound(next) : next; next < end;
       next++) {
    if (records_[next].device == device && isWanted(records_[next])) {
      return true;
    }
  }
  return false;
}

bool RecordTape::done() const {
  return front_ == end_ && std::ranges::none_of(devices_, [](const auto& device) {
           return device.second.open && device.second.handling;
         });
}

}  // namespace gfast::replay
