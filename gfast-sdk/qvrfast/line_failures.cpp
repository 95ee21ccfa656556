#include "qvrfast/line_failures.h"

#include "qvrfast/time_stamp.h"
#include "std/callback_slot.h"

using namespace gfast;

namespace {

constinit CallbackSlot<QVR_lineFailureCB> lineFailureCB;

// Every reason except margin and RMC counts as a loss of signal.
constexpr QVR_lineFailureDesc_t failuresOf(LINK_FAILURE_TYPE_E reason) {
  switch (reason) {
    case LF_REASON_LOSS_OF_RMC:
      return {.LOS = FALSE, .LOM = FALSE, .LOR = TRUE};
    case LF_REASON_LOSS_OF_MARGIN:
      return {.LOS = FALSE, .LOM = TRUE, .LOR = FALSE};
    default:
      return {.LOS = TRUE, .LOM = FALSE, .LOR = FALSE};
  }
}

}  // namespace

void QVR_registerlineFailuresCB(QVR_lineFailureCB xi_callback) {
  lineFailureCB.store(xi_callback);
}

void gfast::QVR_LinkFailureEventHandler(QVR_lineId_t xi_lineId, LINK_FAILURE_TYPE_E xi_reason,
                                        time_t xi_time) {
  QVR_lineFailures_t failures{};
  formatTimeStamp(xi_time, failures.timeStampString);
  failures.timeStamp = xi_time;
  failures.lineFailures = failuresOf(xi_reason);
  lineFailureCB.notify(xi_lineId, &failures);
}
