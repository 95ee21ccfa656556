// Management messages to the modem at the far end of a line.

#include <qvr.h>

#include <cerrno>
#include <cstring>

#include "driver/driver.h"
#include "driver/envelope.h"
#include "qvrdev/device_lines.h"
#include "qvrdev/device_table.h"
#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

// Field logs are searched for "QVR_sendMsgToFarEnd:1953", so the message keeps this line number wherever the
// code moves.
constexpr int kLineInFieldLogs = 1953;

bool isInShowtime(QVR_deviceId_t device, uint16_t narrowLine) {
  const QVR_deviceInfo_t record = deviceRecord(device);
  return narrowLine < linesOfRecord(record) && record.lineState[narrowLine] == LS_SHOWTIME;
}

}  // namespace

QVR_retval_t QVR_sendMsgToFarEnd(QVR_deviceId_t xi_deviceId, uint16_t xi_narrowLineId,
                                 MGMT_FAR_END_REQ_TYPE xi_type, void* xio_message, uint32_t xi_requestLength,
                                 uint32_t xi_responseLength, uint32_t* xo_responseLength) {
  *xo_responseLength = 0;
  const int descriptor = QVR_deviceHandle(xi_deviceId);
  if (descriptor < 0) {
    return QVR_E_DEVICE_NOT_EXISTS;
  }
  if (!isInShowtime(xi_deviceId, xi_narrowLineId)) {
    return QVR_E_LINE_NOT_ACTIVE;
  }
  gfast_iocreq request = emptyRequest();
  gfast_farendmsg& message = request.req_u.farendmsg;
  message.port_idx = xi_narrowLineId;
  message.farend_msg_req_type = static_cast<uint16_t>(xi_type);
  message.buf = static_cast<char*>(xio_message);
  message.bufsize = xi_responseLength;
  message.outmsg_datalen = xi_requestLength;
  message.inmsg_datalen = xi_responseLength;
  if (driver().request(descriptor, DFEIOCFARENDMSG, request) < 0) {
    char text[128];
    QVR_traceLogMessage(QVRLOG_ERR, __func__, kLineInFieldLogs, "ioctl: farendmsg error - %s copied %u\n",
                        strerror_r(errno, text, sizeof text), message.datalen_copied_to_user);
    return QVR_E_FAILED_SENDING_FAR_END_MSG;
  }
  *xo_responseLength = message.datalen_copied_to_user;
  return QVR_E_STATUS_OK;
}
