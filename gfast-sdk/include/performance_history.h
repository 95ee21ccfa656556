// Performance counters of a line by interval (ITU-T G.997.2): now, by quarter hour, by day.
#pragma once

#include <cstdint>
#include <ctime>

#include "qvr_bool.h"

using G9972_eventCounter_t = uint32_t;
using G9972_eventSecondsCounter_t = uint32_t;  // seconds in which something was so
using G9972_EFB_t = uint32_t;                  // units of G9772_EFB_UNITS bits
using G9972_measuredTime_t = uint32_t;         // seconds
using G9972_timeStamp_t = char[30];            // local time, "%Y-%m-%dT%H:%M:%S+%Z"

constexpr uint32_t G9772_EFB_UNITS = 65536;
constexpr uint32_t QVR_K_NUMBER_OF_15MIN_INTERVALS_IN_DAY = 96;
constexpr uint32_t QVR_K_NUMBER_OF_15MIN_INTERVALS_IN_HISTORY = 96;
constexpr uint32_t QVR_K_NUMBER_OF_24HR_INTERVALS_IN_HISTORY = 7;
constexpr uint32_t QVR_K_SECS_IN_15MIN_COLLECTION_INTERVAL = 900;
constexpr uint32_t QVR_K_SECS_IN_24HR_COLLECTION_INTERVAL = 86400;

struct QVR_TimeInterval_t {
  uint32_t intervalNumber;
  G9972_measuredTime_t TIME;  // covered
  BOOL INVALID;               // not complete
  G9972_timeStamp_t STAMP;
};

// Counters of a line at one end.
struct QVR_linePerformance_t {
  QVR_TimeInterval_t timeInterval;
  // Failures: loss of signal, of margin, of the RMC, of power.
  G9972_eventCounter_t LOS;
  G9972_eventCounter_t LOM;
  G9972_eventCounter_t LOR;
  G9972_eventCounter_t LPR;
  // Seconds: errored, severely errored, without signal, without RMC, unavailable.
  G9972_eventSecondsCounter_t ES;
  G9972_eventSecondsCounter_t SES;
  G9972_eventSecondsCounter_t LOSS;
  G9972_eventSecondsCounter_t LORS;
  G9972_eventSecondsCounter_t UAS;
  G9972_eventCounter_t FULL_INITS;
  G9972_eventCounter_t FAILEDFULL_INITS;
  G9972_eventCounter_t FAST_INITS;
  G9972_eventCounter_t FAILEDFAST_INITS;
  // Adaptations carried out (ITU-T G.9701).
  G9972_eventCounter_t SRA;
  G9972_eventCounter_t FRA;
  G9972_eventCounter_t RPA;
  G9972_eventCounter_t TIGA;
  G9972_eventCounter_t BSW;
};

// Counters of what a line carries, at one end.
struct QVR_ChannelPerformance_t {
  QVR_TimeInterval_t timeInterval;
  G9972_eventCounter_t CV;     // code violations
  G9972_eventCounter_t RTXUC;  // data transfer units that no retransmission corrected
  G9972_eventCounter_t RTXTX;  // data transfer units retransmitted
  G9972_EFB_t EFB;             // error-free bits
};

struct QVR_performanceCounterDB_t {
  QVR_linePerformance_t linePerformanceCounters;
  QVR_ChannelPerformance_t channelPerformanceCounters;
};

// One interval of the history.
struct QVR_intervalLinkCounterDB_t {
  uint32_t intervalNumber;
  G9972_measuredTime_t collectionTime;  // actually collected
  G9972_timeStamp_t timestampString;
  time_t timestamp;
  QVR_performanceCounterDB_t neCounters;
  QVR_performanceCounterDB_t feCounters;
};

struct QVR_lineFailureDesc_t {
  BOOL LOS;
  BOOL LOM;
  BOOL LOR;
};

struct QVR_lineFailures_t {
  G9972_timeStamp_t timeStampString;
  time_t timeStamp;
  QVR_lineFailureDesc_t lineFailures;
};
