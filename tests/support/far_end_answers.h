// What a far end answers about itself when it is asked.
#pragma once

#include "support/driver_script.h"

using namespace gfast;

// Eleven counters.
inline Script asksManagement(int device, const Bytes& answer) {
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_MGMT_COUNTERS, {}, 44, answer);
}

// SNRM 0x1234, ATTNDR 0x92345678, nearEnd_ACTATP 0xABCD, farEnd_INP_act_shine 0x0304,
// farEnd_actualSNRM_RMC 0xF102, RXpower_dBm_DS 0x0607.
inline const Bytes kPmd{0x34, 0x12, 0x78, 0x56, 0x34, 0x92, 0xCD, 0xAB, 0x04, 0x03, 0x02, 0xF1, 0x07, 0x06};

inline Script asksPmd(int device, const Bytes& answer = kPmd) {
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ, {}, 14, answer);
}

// A far end that measures a margin of 8.2 dB, 500000 kbit/s attainable, sends -7.5 dBm, and has 9.1 dB of
// margin for its RMC.
constexpr uint16_t kFarEndMargin = 82;
constexpr uint32_t kFarEndAttainable = 500000;
constexpr int16_t kFarEndPower = -75;
constexpr uint16_t kFarEndRmcMargin = 91;

inline Script asksMeasurements(int device) {
  Bytes answer(14);
  store_le16(&answer[0], kFarEndMargin);
  store_le32(&answer[2], kFarEndAttainable);
  store_le16(&answer[6], static_cast<uint16_t>(kFarEndPower));
  store_le16(&answer[10], kFarEndRmcMargin);
  return asksPmd(device, answer);
}
