// Performance counters of a line by interval (ITU-T G.997.2): now, by quarter hour, by day.
#pragma once

#include <qvr/types.h>
#include <time.h>

QVR_BEGIN_C

typedef uint32_t G9972_eventCounter_t;         // times that something happened
typedef uint32_t G9972_eventSecondsCounter_t;  // seconds in which something was so
typedef uint32_t G9972_EFB_t;                  // units of G9772_EFB_UNITS bits
typedef uint32_t G9972_measuredTime_t;         // seconds
typedef char G9972_timeStamp_t[30];            // local time, "%Y-%m-%dT%H:%M:%S+%Z"

// What the history counts in, and how much of it is kept.
#define G9772_EFB_UNITS 65536U
#define QVR_K_NUMBER_OF_15MIN_INTERVALS_IN_DAY 96U
#define QVR_K_NUMBER_OF_15MIN_INTERVALS_IN_HISTORY 96U
#define QVR_K_NUMBER_OF_24HR_INTERVALS_IN_HISTORY 7U
#define QVR_K_SECS_IN_15MIN_COLLECTION_INTERVAL 900U
#define QVR_K_SECS_IN_24HR_COLLECTION_INTERVAL 86400U

// When counters were collected.
typedef struct QVR_TimeInterval_t {
  uint32_t intervalNumber;    // see the operation that fills it
  G9972_measuredTime_t TIME;  // covered
  QVR_bool_t INVALID;         // not complete
  G9972_timeStamp_t STAMP;    // when the interval ended, or was looked at
} QVR_TimeInterval_t;

// Counters of a line at one end.
typedef struct QVR_linePerformance_t {
  QVR_TimeInterval_t timeInterval;  // when they were collected
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
} QVR_linePerformance_t;

// Counters of what a line carries, at one end.
typedef struct QVR_ChannelPerformance_t {
  QVR_TimeInterval_t timeInterval;  // when they were collected
  G9972_eventCounter_t CV;          // code violations
  G9972_eventCounter_t RTXUC;       // data transfer units that no retransmission corrected
  G9972_eventCounter_t RTXTX;       // data transfer units retransmitted
  G9972_EFB_t EFB;                  // error-free bits
} QVR_ChannelPerformance_t;

// All counters at one end.
typedef struct QVR_performanceCounterDB_t {
  QVR_linePerformance_t linePerformanceCounters;        // of the line
  QVR_ChannelPerformance_t channelPerformanceCounters;  // of what it carries
} QVR_performanceCounterDB_t;

// One interval of the history.
typedef struct QVR_intervalLinkCounterDB_t {
  uint32_t intervalNumber;  // of a quarter hour: 1 to 96, of the one that begins when this one ends
  G9972_measuredTime_t collectionTime;    // actually collected
  G9972_timeStamp_t timestampString;      // the same time in words
  time_t timestamp;                       // when the interval ended, or was looked at
  QVR_performanceCounterDB_t neCounters;  // of the near end
  QVR_performanceCounterDB_t feCounters;  // of the far end
} QVR_intervalLinkCounterDB_t;

// Which failures came: loss of signal, of margin, of the RMC.
typedef struct QVR_lineFailureDesc_t {
  QVR_bool_t LOS;  // loss of signal
  QVR_bool_t LOM;  // loss of margin
  QVR_bool_t LOR;  // loss of the RMC
} QVR_lineFailureDesc_t;

// What failed, and when.
typedef struct QVR_lineFailures_t {
  G9972_timeStamp_t timeStampString;   // the same time in words
  time_t timeStamp;                    // when the chip told it
  QVR_lineFailureDesc_t lineFailures;  // which ones
} QVR_lineFailures_t;

// The counters as they stand, since the chip started. Of timeInterval only intervalNumber is set, to 0, and
// by the channel counters nothing.
//   as the counter blocks they are read from
QVR_retval_t QVR_getCurrNELinePerformance(QVR_lineId_t xi_lineId, QVR_linePerformance_t* xo_counters);
QVR_retval_t QVR_getCurrFELinePerformance(QVR_lineId_t xi_lineId, QVR_linePerformance_t* xo_counters);
QVR_retval_t QVR_getCurrNEChannelPerformance(QVR_lineId_t xi_lineId, QVR_ChannelPerformance_t* xo_counters);
QVR_retval_t QVR_getCurrFEChannelPerformance(QVR_lineId_t xi_lineId, QVR_ChannelPerformance_t* xo_counters);

// Intervals that are kept, the running one included.
uint8_t QVR_numberOf15minHistoryIntervals(QVR_lineId_t xi_lineId);
uint8_t QVR_numberOf24hrHistoryIntervals(QVR_lineId_t xi_lineId);

// The running quarter hour and the running day up to now.
//   as QVR_readPerformanceMonitoringCounters
QVR_retval_t QVR_getCurr15minCounters(QVR_lineId_t xi_lineId, QVR_intervalLinkCounterDB_t* xo_interval);
QVR_retval_t QVR_getCurr24hrCounters(QVR_lineId_t xi_lineId, QVR_intervalLinkCounterDB_t* xo_interval);

// A kept interval, counted back from the running one, which is 0.
//   QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE  no such interval is kept; nothing is filled
//   otherwise as the running interval
QVR_retval_t QVR_getPrev15minCounters(QVR_lineId_t xi_lineId, int8_t xi_interval,
                                      QVR_intervalLinkCounterDB_t* xo_interval);
QVR_retval_t QVR_getPrev24hrCounters(QVR_lineId_t xi_lineId, int8_t xi_interval,
                                     QVR_intervalLinkCounterDB_t* xo_interval);

// Answers TRUE to go on to the next older interval.
typedef QVR_bool_t (*QVR_intervalCounterHistoryCB)(QVR_lineId_t xi_lineId,
                                                   QVR_intervalLinkCounterDB_t* xi_interval);

// Every kept interval, newest first, after the running quarter hour has been brought up to date. The callback
// runs on the caller's thread, with copies.
//   as QVR_getCurr15minCounters; otherwise QVR_E_STATUS_OK, also when the callback ended the walk
QVR_retval_t QVR_dump15minCounterHistoryDB(QVR_lineId_t xi_lineId, QVR_intervalCounterHistoryCB xi_callback);
QVR_retval_t QVR_dump24hrCounterHistoryDB(QVR_lineId_t xi_lineId, QVR_intervalCounterHistoryCB xi_callback);

// Run on the notification thread: a line failed, in words of ITU-T G.997.2; a line's day is over. Each keeps
// one callback, NULL clears it. The records live as long as the call.
typedef void (*QVR_lineFailureCB)(QVR_lineId_t xi_lineId, const QVR_lineFailures_t* xi_failures);
typedef void (*QVR_24hrEventCB)(QVR_lineId_t xi_lineId, const char* xi_timeStamp, time_t xi_time);
void QVR_registerlineFailuresCB(QVR_lineFailureCB xi_callback);
void QVR_register24hrEventCB(QVR_24hrEventCB xi_callback);

QVR_END_C
