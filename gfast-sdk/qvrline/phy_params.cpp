#include "qvrline/phy_params.h"
#include <algorithm>

#include "qvrline/line_module.h"
#include "qvrline/line_table.h"

using namespace gfast;

QVR_linePhyParams_t gfast::withinGrid(const QVR_linePhyParams_t& said) {
  const uint32_t left = QVR_MAX_NUMBER_OF_TONES - std::min(said.firstTone, QVR_MAX_NUMBER_OF_TONES);
  return {said.firstTone, std::min(said.numProcessedTones, left)};
}

QVR_retval_t QVR_getLinePhyParams(QVR_lineId_t xi_lineId, QVR_linePhyParams_t* xo_params) {
  const QVR_retval_t status = QVR_refreshLineInfo(xi_lineId, FALSE);
  if (QVR_STATUS_OK(status)) {
    *xo_params = QVR_lineDescriptorForLine(xi_lineId).phyParams;
  }
  return status;
}
