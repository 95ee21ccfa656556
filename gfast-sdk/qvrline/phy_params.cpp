#include "qvrline/phy_params.h"

#include "qvrline/line_module.h"
#include "qvrline/line_table.h"
#include "std/bits.h"

QVR_linePhyParams_t withinGrid(const QVR_linePhyParams_t& said) {
  const uint32_t left = QVR_MAX_NUMBER_OF_TONES - min(said.firstTone, QVR_MAX_NUMBER_OF_TONES);
  return {said.firstTone, min(said.numProcessedTones, left)};
}

QVR_retval_t QVR_getLinePhyParams(QVR_lineId_t xi_lineId, QVR_linePhyParams_t* xo_params) {
  const QVR_retval_t status = QVR_refreshLineInfo(xi_lineId, FALSE);
  if (QVR_STATUS_OK(status)) {
    *xo_params = withinGrid(QVR_lineDescriptorForLine(xi_lineId).phyParams);
  }
  return status;
}
