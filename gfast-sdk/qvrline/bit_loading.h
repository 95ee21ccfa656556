// Bits of each subcarrier, of data and of RMC symbols.
#pragma once

#include <qvr.h>

namespace gfast {

// What the chip sends (xi_isTx TRUE) or receives. Results as QVR_readTxBitLoadingTable and its kin.
QVR_retval_t QVR_readBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits, BOOL xi_isTx);
QVR_retval_t QVR_readRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits, BOOL xi_isTx);

}  // namespace gfast
