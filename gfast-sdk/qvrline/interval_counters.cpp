#include "qvrline/interval_counters.h"

#include <atomic>

#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

constinit std::atomic<QVR_15minCounterUpdateNotificationCB> counter_update{nullptr};

void endQuarterHour(QVR_lineId_t line, time_t boundary) {
  G9972_PM_COUNTERS_S latest;
  if (QVR_STATUS_ERROR(QVR_readPerformanceMonitoringCounters(line, &latest))) {
    QVR_traceLogMessage(QVRLOG_ERR, "QVR_15minCounterEventHandler", __LINE__,
                        "Failed reading performance monitoring counters for line %d\n", line);
    return;
  }
  storeClosingCounters(line, latest);
  if (const auto callback = counter_update.load()) {
    callback(line, boundary);
  }
  // The next interval starts where the reported one ended, so no count is lost between them.
  QVR_intervalCounterDB_t counters = QVR_lineDescriptorForLine(line).counters;
  QVR_resetIntervalCounters(&counters);
  storeCounters(line, counters);
}

}  // namespace

void gfast::QVR_resetIntervalCounters(QVR_intervalCounterDB_t* xio_counters) {
  xio_counters->prev15minSnapshot = xio_counters->curr15minSnapshot;
}

void gfast::QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationCB xi_callback) {
  counter_update = xi_callback;
}

void gfast::QVR_15minCounterEventHandler(time_t xi_boundary) {
  for (QVR_lineId_t line = 0; line <= QVR_K_LINE_ID_LAST; line++) {
    endQuarterHour(line, xi_boundary);
  }
}
