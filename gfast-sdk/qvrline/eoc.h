// The embedded operations channel of a line carries one exchange at a time.
#pragma once

#include <qvr.h>

namespace gfast {

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

// Sends the far end a request without a body; the answer is a record of a fixed size. Holds the line's
// channel during the exchange.
//   QVR_E_NO_DEVICE_FOR_LINE          the line has no device
//   QVR_E_FAILED_SENDING_FAR_END_MSG  no exchange, or a response shorter than the record
QVR_retval_t askFarEnd(QVR_lineId_t lineId, MGMT_FAR_END_REQ_TYPE type, uint8_t* response, uint32_t size);

}  // namespace gfast
