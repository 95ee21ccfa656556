// The blocks of a line that carries data, and the requests that read them.
#pragma once

#include "support/counter_blocks.h"
#include "support/far_end_answers.h"

using namespace gfast;

inline GFAST_DERIVED_COUNTERS_S derived() {
  GFAST_DERIVED_COUNTERS_S block{};
  block.RxNDR = 4100000000;
  block.RxETR = 110001;
  block.TxNDR = 420002;
  block.TxETR = 410002;
  return block;
}

inline GFAST_FRAMER_RAW_COUNTERS_S framer() {
  GFAST_FRAMER_RAW_COUNTERS_S block{};
  block.attainableNdr = 130003;
  return block;
}

inline ETR_DB_S database() {
  ETR_DB_S block{};
  block.Rx_nFec = 255;
  block.Rx_kFec = 239;
  block.Rx_Q = 4;
  block.Tx_nFec = 144;
  block.Tx_kFec = 128;
  block.Tx_Q = 16;
  return block;
}

inline Script readsReceived(int device) {
  return readsDerived(device, derived()) + readsFramerInit(device) + readsFramer(device, framer()) +
         readsEtrDatabase(device, database());
}

inline Script readsTransmitted(int device) {
  return readsDerived(device, derived()) + asksMeasurements(device) + readsEtrDatabase(device, database());
}
