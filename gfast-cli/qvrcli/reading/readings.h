// The latest reading, for any number of readers. One thread of its own reads, when somebody asks and what
// there is has become old: so the chips are asked at most once in an interval. When nobody asks it reads now
// and then, for the figures of the day.
#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>

#include "qvrcli/reading/day_figures.h"
#include "qvrcli/reading/line_reading.h"
#include "qvrcli/reading/running_totals.h"

namespace gfast::console {

constexpr std::chrono::seconds kReadingInterval{5};
constexpr std::chrono::seconds kReadingIntervalUnasked{300};

// How old the tones may be. Tables of 2048 tones are read through the line's own management channel, so those
// who look at figures only are content with old ones.
constexpr std::chrono::seconds kTonesForFigures{900};
constexpr std::chrono::seconds kTonesForPlots{60};

class Readings {
 public:
  // Never destroyed: its thread reads until the process ends.
  static Readings& start();

  // A reading that is not older than the interval; of those who want plots also with such tones. While a
  // command has the turn there may be none: after some seconds the last one is returned, or none when there
  // never was one.
  std::shared_ptr<const Reading> latest(std::chrono::seconds toneAge);

 private:
  using Time = std::chrono::microseconds;  // of the clock seam's steady time

  struct Tones {
    std::optional<Time> tried;  // since the line is up
    std::shared_ptr<const ToneReading> tones;
    std::optional<time_t> stateSince;  // of the line when they were read
  };

  Readings() = default;
  void run();
  void readOnce();
  void readNew();
  void addTotals(Reading& reading);
  void addDayFigures(Reading& reading);
  void readTones(const Reading& reading, std::chrono::seconds toneAge);
  void publish(Reading reading, std::optional<Time> began);  // of a new one, when it began
  bool isFresh(Time asked) const;
  bool tonesAreFresh(Time asked, std::chrono::seconds toneAge) const;

  std::mutex lock_;
  std::condition_variable changed_;
  std::shared_ptr<const Reading> current_;
  std::optional<Time> began_;  // the current one
  std::array<Tones, QVR_K_MAX_LINES> tones_;
  std::optional<std::chrono::seconds> wanted_;  // the youngest tones that somebody waits for
  // Of the reading thread only.
  std::array<RunningTotals, QVR_K_MAX_LINES> networkTotals_, subscriberTotals_;
  std::array<DayFigures, QVR_K_MAX_LINES> dayFigures_;
  int reboots_ = 0;
  time_t countedSince_ = 0;
  uint32_t number_ = 0;
};

}  // namespace gfast::console
