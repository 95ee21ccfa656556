#include "qvrfast/interval_delta.h"

#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

using Near = G9972_NEAR_END_COUNTERS_S;
using Far = G9972_FAR_END_COUNTERS_S;

// A counter of an interval, and the chip's word for it at each end. Some have no word for the far end.
template <typename Group>
struct CounterSource {
  uint32_t Group::*counter;
  uint32_t Near::*near;
  uint32_t Far::*far;
};

using Line = QVR_linePerformance_t;
constexpr CounterSource<Line> kLineCounters[] = {
    {&Line::LOS, &Near::LOS, &Far::LOS},
    {&Line::LOM, &Near::LOM, &Far::LOM},
    {&Line::LOR, &Near::LOR, &Far::LOR},
    {&Line::LPR, &Near::LPR, &Far::LPR},
    {&Line::ES, &Near::ES, &Far::ES},
    {&Line::SES, &Near::SES, &Far::SES},
    {&Line::LOSS, &Near::LOSS, &Far::LOSS},
    {&Line::LORS, &Near::LORS, &Far::LORS},
    {&Line::UAS, &Near::UAS, &Far::UAS},
    {&Line::FULL_INITS, &Near::FULL_INITS, nullptr},
    {&Line::FAILEDFULL_INITS, &Near::FAILEDFULL_INITS, nullptr},
    {&Line::FAST_INITS, &Near::FAST_INITS, nullptr},
    {&Line::FAILEDFAST_INITS, &Near::FAILEDFAST_INITS, nullptr},
    {&Line::SRA, &Near::SRA, &Far::SRA},
    {&Line::FRA, &Near::FRA, &Far::FRA},
    {&Line::RPA, &Near::RPA, &Far::RPA},
    {&Line::TIGA, &Near::TIGA, nullptr},
    {&Line::BSW, &Near::BSW, &Far::BSW},
};

using Channel = QVR_ChannelPerformance_t;
constexpr CounterSource<Channel> kChannelCounters[] = {
    {&Channel::CV, &Near::CV, &Far::CV},
    {&Channel::RTXUC, &Near::RTXUC, &Far::RTXUC},
    {&Channel::RTXTX, &Near::RTXTX, &Far::RTXTX},
    {&Channel::EFB, &Near::EFB, &Far::EFB},
};

template <typename Group, size_t Count>
void fill(const CounterSource<Group> (&counters)[Count], const QVR_intervalCounterDB_t& snapshots,
          Group* near, Group* far) {
  const G9972_PM_COUNTERS_S& now = snapshots.curr15minSnapshot;
  const G9972_PM_COUNTERS_S& start = snapshots.prev15minSnapshot;
  for (const CounterSource<Group>& source : counters) {
    near->*source.counter = now.ne.*source.near - start.ne.*source.near;
    if (source.far != nullptr) {
      far->*source.counter = now.fe.*source.far - start.fe.*source.far;
    }
  }
}

template <typename Group, size_t Count>
void add(const CounterSource<Group> (&counters)[Count], const Group& added, Group* sum) {
  for (const CounterSource<Group>& source : counters) {
    sum->*source.counter += added.*source.counter;
  }
}

constexpr int shown(uint32_t value) {
  return static_cast<int>(value);
}

// Moves the start for later queries of the same interval; the entry keeps the value it has.
void limitUnavailableSeconds(QVR_intervalCounterDB_t* snapshots,
                             const QVR_intervalLinkCounterDB_t& interval) {
  const uint32_t collected = interval.collectionTime;
  const uint32_t unavailable = interval.neCounters.linePerformanceCounters.UAS;
  if (unavailable <= collected) {
    return;
  }
  const uint32_t now = snapshots->curr15minSnapshot.ne.UAS;
  uint32_t& start = snapshots->prev15minSnapshot.ne.UAS;
  constexpr const char* name = "QVR_update15minPeformanceCounters";
  QVR_traceLogMessage(QVRLOG_DEBUG, name, __LINE__, "UAS=%1d > collectionTime=%1d\n", shown(unavailable),
                      shown(collected));
  QVR_traceLogMessage(QVRLOG_DEBUG, name, __LINE__,
                      "pCurrDerivedCounters->unavailableSeconds = %1d xi_collection time = %1d\n", shown(now),
                      shown(collected));
  QVR_traceLogMessage(QVRLOG_DEBUG, name, __LINE__,
                      "pPrevDerivedCounters->unavailableSeconds = %1d xi_collection time = %1d\n",
                      shown(start), shown(collected));
  start = now - collected;
}

}  // namespace

void gfast::QVR_update15minPeformanceCounters(QVR_intervalCounterDB_t* xio_snapshots,
                                              QVR_intervalLinkCounterDB_t* xio_interval) {
  QVR_performanceCounterDB_t& near = xio_interval->neCounters;
  QVR_performanceCounterDB_t& far = xio_interval->feCounters;
  fill(kLineCounters, *xio_snapshots, &near.linePerformanceCounters, &far.linePerformanceCounters);
  fill(kChannelCounters, *xio_snapshots, &near.channelPerformanceCounters, &far.channelPerformanceCounters);
  limitUnavailableSeconds(xio_snapshots, *xio_interval);

  const QVR_linePerformance_t& line = near.linePerformanceCounters;
  const Near& start = xio_snapshots->prev15minSnapshot.ne;
  const Near& now = xio_snapshots->curr15minSnapshot.ne;
  TRACE_LOG(QVRLOG_DEBUG, "RPA = %d prev RPA=%d curr RPA=%d\n", shown(line.RPA), shown(start.RPA),
            shown(now.RPA));
  TRACE_LOG(QVRLOG_DEBUG, "UAS = %d prev UAS=%d curr=UAS=%d\n", shown(line.UAS), shown(start.UAS),
            shown(now.UAS));
  TRACE_LOG(QVRLOG_DEBUG, "EFB = %d prev EFB=%d curr EFB=%d\n", shown(near.channelPerformanceCounters.EFB),
            shown(start.EFB), shown(now.EFB));
  TRACE_LOG(QVRLOG_DEBUG, "BSW = %d prev BSW=%d curr BSW=%d\n", shown(line.BSW), shown(start.BSW),
            shown(now.BSW));
}

void gfast::QVR_accumulateIntervalCounters(QVR_performanceCounterDB_t* xio_sum,
                                           const QVR_performanceCounterDB_t* xi_added) {
  add(kLineCounters, xi_added->linePerformanceCounters, &xio_sum->linePerformanceCounters);
  add(kChannelCounters, xi_added->channelPerformanceCounters, &xio_sum->channelPerformanceCounters);
}
