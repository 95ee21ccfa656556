// The embedded operations channel of a line carries one exchange at a time.
#pragma once

#include <qvr.h>

// Lock and unlock the line's channel. A line id out of range is assertion 200.
void QVR_EOC_CaptureLine(QVR_lineId_t lineId);
void QVR_EOC_ReleaseLine(QVR_lineId_t lineId);

// Holds a line's channel for the length of a scope.
class EocExchange {
 public:
  explicit EocExchange(QVR_lineId_t lineId) : lineId_(lineId) { QVR_EOC_CaptureLine(lineId_); }
  ~EocExchange() { QVR_EOC_ReleaseLine(lineId_); }
  EocExchange(const EocExchange&) = delete;
  EocExchange& operator=(const EocExchange&) = delete;

 private:
  QVR_lineId_t lineId_;
};
