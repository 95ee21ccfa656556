// Memory of the modem at the far end of a line.
#include <qvr.h>

QVR_retval_t QVR_readmemFarEnd(QVR_lineId_t /*xi_lineId*/, uint32_t /*xi_address*/, void* /*xo_buffer*/,
                               uint32_t /*xi_numBytes*/) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
