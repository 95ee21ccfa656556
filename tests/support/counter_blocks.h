// The counter blocks of a device's only line, as they lie in chip memory.
#pragma once

#include "support/driver_script.h"
#include "support/records.h"

using namespace gfast;

inline Script readsFramer(int device, const GFAST_FRAMER_RAW_COUNTERS_S& block) {
  return reads(device, 0xE2440000, chipBytes(block));
}
inline Script readsFdu(int device, const GFAST_FDU_RAW_COUNTERS_S& block) {
  return reads(device, 0xE2040000, chipBytes(block));
}
inline Script readsDerived(int device, const GFAST_DERIVED_COUNTERS_S& block) {
  return reads(device, 0xE2880000, chipBytes(block));
}
inline Script readsFramerInit(int device) {
  return reads(device, 0xE2400000, Bytes(sizeof(GFAST_FRAMER_INIT_COUNTERS_S), 0xEE));
}
inline Script readsEtrDatabase(int device, const ETR_DB_S& block) {
  return reads(device, 0xE5002000, chipBytes(block));
}
