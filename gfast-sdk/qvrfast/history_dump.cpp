// Walks the history of a line, newest interval first.

#include "qvrfast/interval_history.h"

#include <qvr.h>

using namespace gfast;

namespace {

template <typename Ring>
Ring copyOf(QVR_lineId_t line, Ring LineHistory::*ring) {
  const LockedHistory history(line);
  return history.operator->()->*ring;
}

// Walks a copy, so that boundaries can pass while the callback runs.
template <typename Ring>
void walk(QVR_lineId_t line, Ring ring, QVR_intervalCounterHistoryCB callback) {
  uint8_t index = ring.head;
  while (callback(line, &ring.counterHistory[index]) != FALSE && index != ring.tail) {
    index = ring.before(index);
  }
}

template <typename Ring>
QVR_retval_t dump(QVR_lineId_t line, Ring LineHistory::*ring, QVR_intervalCounterHistoryCB callback) {
  QVR_intervalLinkCounterDB_t running;
  const QVR_retval_t status = QVR_getCurr15minCounters(line, &running);
  if (QVR_STATUS_OK(status) && callback != nullptr) {
    walk(line, copyOf(line, ring), callback);
  }
  return status;
}

}  // namespace

QVR_retval_t QVR_dump15minCounterHistoryDB(QVR_lineId_t xi_lineId, QVR_intervalCounterHistoryCB xi_callback) {
  return dump(xi_lineId, &LineHistory::quarterHours, xi_callback);
}

QVR_retval_t QVR_dump24hrCounterHistoryDB(QVR_lineId_t xi_lineId, QVR_intervalCounterHistoryCB xi_callback) {
  return dump(xi_lineId, &LineHistory::days, xi_callback);
}
