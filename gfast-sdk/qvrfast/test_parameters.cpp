// Test parameters by subcarrier (ITU-T G.997.2 clause 7.10).
#include <qvr.h>

QVR_retval_t QVR_getLineStatusBITSpsds(QVR_lineId_t, G9972_BITSps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusBITSpsus(QVR_lineId_t, G9972_BITSps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusBITSRMCpsds(QVR_lineId_t, G9972_BITSps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusBITSRMCpsus(QVR_lineId_t, G9972_BITSps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusSNRpsds(QVR_lineId_t, G9972_SNRps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusSNRpsus(QVR_lineId_t, G9972_SNRps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusALNpsds(QVR_lineId_t, G9972_ALNps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusALNpsus(QVR_lineId_t, G9972_ALNps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusHLOGpsds(QVR_lineId_t, G9972_HLOGps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusHLOGpsus(QVR_lineId_t, G9972_HLOGps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getSignalAttenuationds(QVR_lineId_t, G9972_SATN_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getSignalAttenuationus(QVR_lineId_t, G9972_SATN_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getLineStatusHLOGps(QVR_lineId_t, const double*, const double*, G9972_HLOGps_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
