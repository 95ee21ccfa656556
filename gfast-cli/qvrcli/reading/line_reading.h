// One reading of a line: what it does, carries and counts, who is at its ends. Values are in dB, dBm, dBm/Hz,
// kbit/s, seconds and Hz. What a chip has no value for is absent, never a number that stands for that.
#pragma once

#include <qvr.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qvrcli/events/recent_events.h"

namespace gfast::console {

constexpr double kToneSpacing_hz = 51750;

// What a direction carries (ITU-T G.997.2).
struct DirectionReading {
  std::optional<double> snrMargin_db;
  std::optional<double> rmcSnrMargin_db;
  std::optional<double> transmitPower_dbm;
  std::optional<double> electricalLength_db;  // as the end that receives the direction estimates it
  std::optional<uint32_t> netDataRate_kbps;
  std::optional<uint32_t> expectedThroughput_kbps;
  std::optional<uint32_t> gammaDataRate_kbps;
  std::optional<uint32_t> attainableNetDataRate_kbps;
  std::optional<uint8_t> codewordLength_bytes;
  std::optional<uint8_t> codewordRedundancy_bytes;
  std::optional<uint8_t> codewordsPerDtu;
};

// Counters of one end, of an interval or since the chip started.
struct EndCounters {
  uint32_t lossOfSignal, lossOfMargin, lossOfRmc, lossOfPower;
  uint32_t erroredSeconds, severelyErroredSeconds, lossOfSignalSeconds, lossOfRmcSeconds, unavailableSeconds;
  uint32_t bitSwaps, rateAdaptations, fastRateAdaptations, rmcAdaptations;
  uint32_t codeViolations, uncorrectedDtus, retransmittedDtus;
  uint32_t errorFreeBits;  // in units of 65536 bits
  // Of the near end only.
  bool countsNearOnly = false;
  uint32_t gainAdjustments;
  uint32_t fullInitialisations, failedFullInitialisations, fastInitialisations, failedFastInitialisations;
};

// The same counters, by their place in kCounterColumns, since the chip started or longer: they go on when the
// chip starts anew, and do not wrap at 32 bits.
constexpr size_t kCounters = 22;
using EndTotals = std::array<uint64_t, kCounters>;

// One end during an interval.
struct EndInterval {
  bool complete = false;  // counted from its first second to its last
  EndCounters counters{};
};

// A quarter hour or a day.
struct IntervalReading {
  time_t end = 0;  // when it ended; when it was read, of the running one
  uint32_t measuredTime_s = 0;
  EndInterval near, far;
};

struct HistoryReading {
  std::optional<IntervalReading> running;
  std::vector<IntervalReading> past;  // newest first
};

struct InitialisationReading {
  G9972_initSuccessFailureCause_t cause;
  uint8_t lastSignalDownstream, lastSignalUpstream;
};

// Bits as they are; the others in the decibels that their names say. Absent: not measured, or not in use.
struct ToneDirection {
  std::vector<uint8_t> bits;  // QVR_MAX_NUMBER_OF_TONES of them, or none when they could not be read
  std::vector<std::optional<float>> snr_db, noise_dbmHz, hlog_db;  // likewise
  std::optional<double> attenuation_db;
  std::vector<bool> inUse;  // the tones of the direction's medley set, or none
};

struct ToneReading {
  time_t time = 0;
  ToneDirection downstream, upstream;
};

// The lowest ones during a quarter hour; absent when the line was never seen up.
struct DirectionFigures {
  std::optional<uint32_t> netDataRate_kbps;
  std::optional<double> snrMargin_db;
};

struct QuarterFigures {
  time_t start;
  DirectionFigures downstream, upstream;
};

struct LineReading {
  QVR_lineId_t line = 0;
  bool answers = false;      // the chip; without that nothing else is filled but the memory
  bool networkSide = false;  // whether the chip is at the network side of the line
  G9701_linkState_t state = LS_IDLE;
  LineMemory memory;
  std::optional<InitialisationReading> initialisation;
  std::optional<uint32_t> startUpTime_ms;
  std::optional<uint32_t> deviceTemperature_c;
  std::string firmware;
  std::optional<uint32_t> estimatedLength;  // as the console shows it, a plain number
  DirectionReading downstream, upstream;
  std::optional<EndCounters> networkEnd, subscriberEnd;  // since the chip started
  std::optional<EndTotals> networkTotals, subscriberTotals;
  HistoryReading quarterHours, days;
  std::vector<QuarterFigures> dayFigures;  // oldest first
  std::optional<QVR_inventoryObject_t> inventory;
  std::shared_ptr<const ToneReading> tones;  // none before they are asked for, and of a line that is not up

  bool up() const { return answers && state == LS_SHOWTIME; }
};

// All lines of the system at one time.
struct Reading {
  time_t time = 0;          // when it was complete
  uint32_t number = 0;      // of readings since start
  time_t countedSince = 0;  // the first reading, or the first after a chip started anew
  double duration_s = 0;    // waiting for commands included
  uint32_t operations = 0;  // of the library that it took
  std::vector<LineReading> lines;
  std::vector<RecentEvent> events;
};

// A state of a line in one word.
const char* stateWord(G9701_linkState_t state);

// The result of an initialisation in words.
std::string causeText(G9972_initSuccessFailureCause_t cause);

}  // namespace gfast::console
