// Counter blocks of both ends of a line.
#pragma once

#include <chip/counter_records.h>
#include <qvr/types.h>

QVR_BEGIN_C

// Turns little-endian chip words into values, in place. Bytes behind the last whole word stay as they are.
void QVR_NTOHGfastCounters(void* xio_block, uint32_t xi_lengthInBytes);

// A line's counter blocks at the near end. Each block is converted even when its read failed, but the PM
// block, which is zero then.
//   QVR_E_NO_DEVICE_FOR_LINE                      the line has no device
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  as QVR_readmem
QVR_retval_t QVR_readGfastFramerInitCounters(QVR_lineId_t xi_lineId,
                                             GFAST_FRAMER_INIT_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduInitCounters(QVR_lineId_t xi_lineId, GFAST_FDU_INIT_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFramerRawCounters(QVR_lineId_t xi_lineId, GFAST_FRAMER_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduRawCounters(QVR_lineId_t xi_lineId, GFAST_FDU_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastDerivedCounters(QVR_lineId_t xi_lineId, GFAST_DERIVED_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastETRdbCounters(QVR_lineId_t xi_lineId, ETR_DB_S* xo_counters);
QVR_retval_t QVR_readPerformanceMonitoringCounters(QVR_lineId_t xi_lineId, G9972_PM_COUNTERS_S* xo_counters);

// A line's counter blocks at the far end. A block that was not read whole is zero.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   QVR_E_ERROR               the line is not up
//   otherwise as QVR_readmemFarEnd
QVR_retval_t QVR_readGfastFramerInitCountersFE(QVR_lineId_t xi_lineId,
                                               GFAST_FRAMER_INIT_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduInitCountersFE(QVR_lineId_t xi_lineId, GFAST_FDU_INIT_COUNTERS_S* xo_counters);

// These blocks are completed by what the far end only tells when asked (and, of the framer, by the exchanges
// that the near end counted). Each of those steps stands for itself; the result is that of the last one.
//   QVR_E_NO_DEVICE_FOR_LINE          the line has no device
//   QVR_E_ERROR                       the line is not up
//   QVR_E_FAILED_SENDING_FAR_END_MSG  the last exchange failed
QVR_retval_t QVR_readGfastFramerRawCountersFE(QVR_lineId_t xi_lineId,
                                              GFAST_FRAMER_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduRawCountersFE(QVR_lineId_t xi_lineId, GFAST_FDU_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastDerivedCountersFE(QVR_lineId_t xi_lineId, GFAST_DERIVED_COUNTERS_S* xo_counters);

// What the FTU at the far end counts and measures (ITU-T G.9701). Zero on failure.
//   QVR_E_NO_DEVICE_FOR_LINE          the line has no device
//   QVR_E_FAILED_SENDING_FAR_END_MSG  no exchange, or a response shorter than the record
QVR_retval_t QVR_readFarEndFTUmanagementCounters(QVR_lineId_t xi_lineId,
                                                 G9701_ManagementCounters_t* xo_counters);
QVR_retval_t QVR_readFarEndPMDTestParameters(QVR_lineId_t xi_lineId,
                                             G9701_PMDTestParameters_t* xo_parameters);

QVR_END_C
