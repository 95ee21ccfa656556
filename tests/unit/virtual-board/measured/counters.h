// The counter blocks as the host reads them.
#pragma once

#include "chip/counters.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

constexpr uint32_t kFramerInit =
    VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FRAMER_CORE, 0, VIRT_GFAST_CNTR_INIT);
constexpr uint32_t kFduInit = VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FDU_CORE, 0, VIRT_GFAST_CNTR_INIT);
constexpr uint32_t kFramerRaw = VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FRAMER_CORE, 0, VIRT_GFAST_CNTR_RAW);
constexpr uint32_t kFduRaw = VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FDU_CORE, 0, VIRT_GFAST_CNTR_RAW);
constexpr uint32_t kDerived = VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_CP_CORE, 0, VIRT_GFAST_CNTR_DERIVED);
constexpr uint32_t kEtrDb = VIRT_ADDR_ETR_DB(0);
constexpr uint32_t kPm = VIRT_ADDR_15MIN_24HRS_COUNTERS(0);

inline GFAST_FRAMER_RAW_COUNTERS_S framer(Bench& bench, int device) {
  return bench.block<GFAST_FRAMER_RAW_COUNTERS_S>(device, kFramerRaw);
}
inline GFAST_FDU_RAW_COUNTERS_S fdu(Bench& bench, int device) {
  return bench.block<GFAST_FDU_RAW_COUNTERS_S>(device, kFduRaw);
}
inline GFAST_DERIVED_COUNTERS_S derived(Bench& bench, int device) {
  return bench.block<GFAST_DERIVED_COUNTERS_S>(device, kDerived);
}
inline G9972_PM_COUNTERS_S pm(Bench& bench, int device) {
  return bench.block<G9972_PM_COUNTERS_S>(device, kPm);
}
inline G9701_ManagementCounters_t farCounters(Bench& bench, int device) {
  return Bench::record<G9701_ManagementCounters_t>(bench.farEnd(device, 0));
}

// The rate that follows from the record's fields, kbit/s.
inline double expectedThroughput(double ns, double k, double n, double q, double bd, double bdr,
                                 const ETR_DB_S& db) {
  const double f = db.samplingFrequency;
  const double a = f * db.dtuOverheadSize;
  const double m = db.numFramesInSuperFrame;
  const double s = static_cast<double>(db.numSamplesInSymbol) * db.numSymbolsInFrame * n;
  const double x = f * k * (ns - 1) - ns * a / q - f * k / m + a / q + a / (m * q);
  return (bd * x / s * 8 + bdr * f * 8 * (q * k - db.dtuOverheadSize) / (s * q) - 1000) / 1000;
}
