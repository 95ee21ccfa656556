#include "qvrcli/reading/readings.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "clock/clock.h"
#include "qvrcli/events/events.h"
#include "qvrcli/reading/collect_reading.h"

namespace gfast::console {

namespace {

// How long a reader waits for a reading, and for the first tones.
constexpr std::chrono::seconds kPatience{3};
constexpr std::chrono::seconds kPatienceForPlots{6};

size_t at(const LineReading& line) {
  return static_cast<size_t>(line.line);
}

}  // namespace

Readings& Readings::start() {
  auto* const readings = new Readings;
  std::thread([readings] { readings->run(); }).detach();
  return *readings;
}

bool Readings::isFresh(Time asked) const {
  return began_ && *began_ + kReadingInterval > asked;
}

bool Readings::tonesAreFresh(Time asked, std::chrono::seconds toneAge) const {
  return std::ranges::all_of(current_->lines, [&](const LineReading& line) {
    const Tones& kept = tones_[at(line)];
    return !line.up() || (kept.tried && *kept.tried + toneAge > asked);
  });
}

std::shared_ptr<const Reading> Readings::latest(std::chrono::seconds toneAge) {
  std::unique_lock guard(lock_);
  const Time asked = clockSource().steady();
  const bool plots = toneAge <= kTonesForPlots;
  const auto ready = [&] { return isFresh(asked) && (!plots || tonesAreFresh(asked, toneAge)); };
  if (!ready() || !tonesAreFresh(asked, toneAge)) {
    wanted_ = std::min(toneAge, wanted_.value_or(toneAge));
    changed_.notify_all();
    changed_.wait_for(guard, plots ? kPatienceForPlots : kPatience, ready);
  }
  return current_;
}

void Readings::run() {
  QVR_observeOnly(TRUE);
  for (;;) {
    readOnce();
  }
}

void Readings::readOnce() {
  std::optional<std::chrono::seconds> toneAge;
  bool old = false;
  {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, kReadingIntervalUnasked, [this] { return wanted_.has_value(); });
    toneAge = std::exchange(wanted_, std::nullopt);
    old = !isFresh(clockSource().steady());
  }
  if (old) {
    readNew();
  }
  const auto current = [this] {
    const std::lock_guard guard(lock_);
    return current_;
  }();
  if (toneAge) {
    readTones(*current, *toneAge);
  }
}

void Readings::readNew() {
  const Time began = clockSource().steady();
  Reading reading = collectReading();
  addTotals(reading);
  addDayFigures(reading);
  reading.number = ++number_;
  publish(std::move(reading), began);
}

void Readings::addDayFigures(Reading& reading) {
  for (LineReading& line : reading.lines) {
    DayFigures& day = dayFigures_[at(line)];
    day.add(line, reading.time);
    line.dayFigures = day.all();
  }
}

void Readings::addTotals(Reading& reading) {
  const int reboots = rebootCount();
  const bool restarted = std::exchange(reboots_, reboots) != reboots;
  if (restarted || countedSince_ == 0) {
    countedSince_ = reading.time;
  }
  reading.countedSince = countedSince_;
  for (LineReading& line : reading.lines) {
    if (line.networkEnd) {
      line.networkTotals = networkTotals_[at(line)].add(*line.networkEnd, restarted);
    }
    if (line.subscriberEnd) {
      line.subscriberTotals = subscriberTotals_[at(line)].add(*line.subscriberEnd, restarted);
    }
  }
}

// Those of an earlier showtime are no longer true.
void Readings::readTones(const Reading& reading, std::chrono::seconds toneAge) {
  for (const LineReading& line : reading.lines) {
    const Time now = clockSource().steady();
    {
      const std::lock_guard guard(lock_);
      const Tones& kept = tones_[at(line)];
      if (!line.up() || (kept.tried && *kept.tried + toneAge > now)) {
        continue;
      }
    }
    auto tones = collectTones(line.line);
    {
      const std::lock_guard guard(lock_);
      tones_[at(line)] = {now, std::move(tones), line.memory.stateSince};
    }
    publish(reading, std::nullopt);
  }
}

// The reading with the tones that are true for it.
void Readings::publish(Reading reading, std::optional<Time> began) {
  {
    const std::lock_guard guard(lock_);
    for (LineReading& line : reading.lines) {
      Tones& kept = tones_[at(line)];
      if (!line.up() || kept.stateSince != line.memory.stateSince) {
        kept = {};
      }
      line.tones = kept.tones;
    }
    began_ = began ? began : began_;
    current_ = std::make_shared<const Reading>(std::move(reading));
  }
  changed_.notify_all();
}

}  // namespace gfast::console
