// The status of a line: margins, powers and wire length, from the chip's counter blocks and the far end's
// measurements, and the result of the last initialisation.

#include "qvrdev/device_table.h"

#include <qvr.h>
#include "qvrline/line_table.h"

using namespace gfast;

namespace {

// The wire length follows from the chip's time gap correction, in unsigned 32-bit arithmetic with 10 binary
// places.
constexpr uint32_t kLengthWithoutCorrection = 262752;
constexpr uint32_t kLengthOfOneCorrection = 483;
constexpr uint32_t kLengthFractionBits = 10;

void takeInitialization(const QVR_deviceInfo_t& device, uint32_t narrowLine, QVR_lineStatus_t* status) {
  status->INITSFCAUSE = device.initsFcause[narrowLine];
  status->INITLASTSIGNALds = device.initLastSignalds[narrowLine];
  status->INITLASTSIGNALus = device.initLastSignalus[narrowLine];
}

void readFramer(QVR_lineId_t lineId, QVR_lineStatus_t* status) {
  GFAST_FRAMER_RAW_COUNTERS_S framer{};
  if (QVR_STATUS_OK(QVR_readGfastFramerRawCounters(lineId, &framer))) {
    status->SNRMus = static_cast<int16_t>(framer.snrMargin);
    status->SNRM_RMCus = static_cast<int16_t>(framer.rmcSnrMargin);
    status->DTAMds = static_cast<uint8_t>(framer.dtaCurrentMds);
    status->DTAMdsEVTCNT = framer.dtaMdsExngCnt;
  }
}

void askFarEndMeasurements(QVR_lineId_t lineId, QVR_lineStatus_t* status) {
  G9701_PMDTestParameters_t pmd{};
  if (QVR_STATUS_OK(QVR_readFarEndPMDTestParameters(lineId, &pmd))) {
    status->SNRMds = static_cast<int16_t>(pmd.SNRM);
    status->ACTATPus = static_cast<int16_t>(pmd.nearEnd_ACTATP);
    status->SNRM_RMCds = static_cast<int16_t>(pmd.farEnd_actualSNRM_RMC);
  }
}

// Computes the length even if the block cannot be read; words that were not read are 0.
QVR_retval_t readFdu(QVR_lineId_t lineId, QVR_lineStatus_t* status) {
  GFAST_FDU_RAW_COUNTERS_S fdu{};
  const QVR_retval_t result = QVR_readGfastFduRawCounters(lineId, &fdu);
  if (QVR_STATUS_OK(result)) {
    status->UPBOKLE = static_cast<uint16_t>(fdu.UPBOKLE);
    status->UPBOKLE_R = static_cast<uint16_t>(fdu.UPBOKLE_R);
    status->ACTATPds = static_cast<int16_t>(fdu.ACTATPds);
  }
  status->EWL =
      (kLengthWithoutCorrection - kLengthOfOneCorrection * fdu.TimeGapCorrection) >> kLengthFractionBits;
  return result;
}

}  // namespace

QVR_retval_t QVR_getLineStatus(QVR_lineId_t xi_lineId, QVR_lineStatus_t* xo_status) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (line.deviceId == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  const QVR_deviceInfo_t device = deviceRecord(line.deviceId);
  takeInitialization(device, line.narrowLineID, xo_status);
  const QVR_lineState_t state = device.lineState[line.narrowLineID];
  xo_status->LINK_STATE = state == LS_IDLE ? G9972_LINK_STATE_L3 : G9972_LINK_STATE_L0N;
  xo_status->SNRMds = QVR_K_LEVEL_NOT_AVAILABLE;
  xo_status->SNRMus = QVR_K_LEVEL_NOT_AVAILABLE;
  xo_status->ACTATPus = QVR_K_LEVEL_NOT_AVAILABLE;
  if (state != LS_IDLE) {
    readFramer(xi_lineId, xo_status);
  }
  if (state == LS_SHOWTIME) {
    askFarEndMeasurements(xi_lineId, xo_status);
  }
  return readFdu(xi_lineId, xo_status);
}

QVR_retval_t QVR_getLineStatusInitialization(QVR_lineId_t xi_lineId,
                                             G9972_initSuccessFailureCause_t* xo_cause,
                                             G9972_initLastSignal_t* xo_lastSignalDs,
                                             G9972_initLastSignal_t* xo_lastSignalUs) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (line.deviceId == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  if (line.isDPsideLink == FALSE) {
    return QVR_E_NOT_CURRENTLY_SUPPORTED;
  }
  QVR_deviceInfo_t device{};
  const QVR_retval_t result = QVR_getDeviceInfo(line.deviceId, &device);
  if (QVR_STATUS_OK(result)) {
    *xo_cause = device.initsFcause[line.narrowLineID];
    *xo_lastSignalDs = device.initLastSignalds[line.narrowLineID];
    *xo_lastSignalUs = device.initLastSignalus[line.narrowLineID];
  }
  return result;
}
