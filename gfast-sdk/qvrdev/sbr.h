// The software boot register of a chip, as a value.
#pragma once

#include <qvr.h>

namespace gfast {

//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  as QVR_readmem; sbr stays as it was
QVR_retval_t readSBR(QVR_deviceId_t device, uint32_t& sbr);

//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMWRITE_ERROR  as QVR_writemem
QVR_retval_t writeSBR(QVR_deviceId_t device, uint32_t sbr);

}  // namespace gfast
