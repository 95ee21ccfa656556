// The chip's counter blocks of a line, at the near end: read from chip memory and turned into values.
#include <qvr.h>

#include <cstring>

#include "chip/counters.h"
#include "qvrline/line_table.h"
#include "std/byte_order.h"

using namespace gfast;

// Blocks are read from chip memory straight into these records, so a record is as long as its block.
static_assert(sizeof(GFAST_FRAMER_INIT_COUNTERS_S) == 72);
static_assert(sizeof(GFAST_FDU_INIT_COUNTERS_S) == 52);
static_assert(sizeof(GFAST_FRAMER_RAW_COUNTERS_S) == 340);
static_assert(sizeof(GFAST_FDU_RAW_COUNTERS_S) == 40);
static_assert(sizeof(GFAST_DERIVED_COUNTERS_S) == 216);
static_assert(sizeof(ETR_DB_S) == 68);
static_assert(sizeof(G9972_NEAR_END_COUNTERS_S) == 88);
static_assert(sizeof(G9972_FAR_END_COUNTERS_S) == 68);
static_assert(sizeof(G9972_PM_COUNTERS_S) == 156);

namespace {

// Reads a block of the line from the line's device.
QVR_retval_t readBlock(QVR_lineId_t lineId, uint32_t (*addressOf)(uint32_t linkId), void* block,
                       uint32_t size) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(lineId);
  if (line.deviceId == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  return QVR_readmem(line.deviceId, addressOf(line.narrowLineID), block, size);
}

template <uint32_t Core, uint32_t Type>
uint32_t counterAddress(uint32_t linkId) {
  return VIRT_ADDR_GFAST_COUNTERS(Core, linkId, Type);
}

// A block is converted even when its read failed; a part that was read is then in the right byte order.
template <typename Block>
QVR_retval_t readCounters(QVR_lineId_t lineId, uint32_t (*addressOf)(uint32_t linkId), Block* block) {
  const QVR_retval_t status = readBlock(lineId, addressOf, block, sizeof(Block));
  if (status != QVR_E_NO_DEVICE_FOR_LINE) {
    QVR_NTOHGfastCounters(block, sizeof(Block));
  }
  return status;
}

}  // namespace

void QVR_NTOHGfastCounters(void* xio_block, uint32_t xi_lengthInBytes) {
  auto* bytes = static_cast<uint8_t*>(xio_block);
  for (uint32_t i = 0; i + sizeof(uint32_t) <= xi_lengthInBytes; i += sizeof(uint32_t)) {
    const uint32_t value = load_le32(bytes + i);
    std::memcpy(bytes + i, &value, sizeof value);
  }
}

QVR_retval_t QVR_readGfastFramerInitCounters(QVR_lineId_t xi_lineId,
                                             GFAST_FRAMER_INIT_COUNTERS_S* xo_counters) {
  return readCounters(xi_lineId, counterAddress<VIRT_GFAST_CNTR_FRAMER_CORE, VIRT_GFAST_CNTR_INIT>,
                      xo_counters);
}

QVR_retval_t QVR_readGfastFduInitCounters(QVR_lineId_t xi_lineId, GFAST_FDU_INIT_COUNTERS_S* xo_counters) {
  return readCounters(xi_lineId, counterAddress<VIRT_GFAST_CNTR_FDU_CORE, VIRT_GFAST_CNTR_INIT>, xo_counters);
}

QVR_retval_t QVR_readGfastFramerRawCounters(QVR_lineId_t xi_lineId,
                                            GFAST_FRAMER_RAW_COUNTERS_S* xo_counters) {
  return readCounters(xi_lineId, counterAddress<VIRT_GFAST_CNTR_FRAMER_CORE, VIRT_GFAST_CNTR_RAW>,
                      xo_counters);
}

QVR_retval_t QVR_readGfastFduRawCounters(QVR_lineId_t xi_lineId, GFAST_FDU_RAW_COUNTERS_S* xo_counters) {
  return readCounters(xi_lineId, counterAddress<VIRT_GFAST_CNTR_FDU_CORE, VIRT_GFAST_CNTR_RAW>, xo_counters);
}

QVR_retval_t QVR_readGfastDerivedCounters(QVR_lineId_t xi_lineId, GFAST_DERIVED_COUNTERS_S* xo_counters) {
  return readCounters(xi_lineId, counterAddress<VIRT_GFAST_CNTR_CP_CORE, VIRT_GFAST_CNTR_DERIVED>,
                      xo_counters);
}

QVR_retval_t QVR_readGfastETRdbCounters(QVR_lineId_t xi_lineId, ETR_DB_S* xo_counters) {
  return readCounters(xi_lineId, VIRT_ADDR_ETR_DB, xo_counters);
}

QVR_retval_t QVR_readPerformanceMonitoringCounters(QVR_lineId_t xi_lineId, G9972_PM_COUNTERS_S* xo_counters) {
  *xo_counters = {};
  const QVR_retval_t status =
      readBlock(xi_lineId, VIRT_ADDR_15MIN_24HRS_COUNTERS, xo_counters, sizeof *xo_counters);
  if (QVR_STATUS_OK(status)) {
    QVR_NTOHGfastCounters(xo_counters, sizeof *xo_counters);
  } else {
    *xo_counters = {};  // a failed read may have filled a part
  }
  return status;
}
