// The inventory of both ends of a line. Vendors, serial numbers and texts are byte strings: they keep the
// byte order they have in chip memory and in messages.

#include <qvr.h>

#include <cstdio>
#include <cstring>

#include "chip/inventory_records.h"
#include "qvrfast/version_text.h"
#include "qvrline/eoc.h"
#include "qvrline/line_table.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

template <size_t Size>
void copyField(char (&field)[Size], const uint8_t* bytes) {
  std::memcpy(field, bytes, Size);
}

// Fills in the local end from its own record.
void takeLocalEnd(const uint8_t* record, QVR_inventoryParameters_t* end) {
  copyField(end->GHS_VENDOR, record + INVENTORY_DB_FTU_GHS_VENDOR);
  copyField(end->SYSTEM_VENDOR, record + INVENTORY_DB_SYSTEM_VENDOR);
  copyField(end->SERIALNR, record + INVENTORY_DB_SYSTEM_SERIAL);
  const uint32_t version = load_le32(record + INVENTORY_DB_FTU_VERSION);
  std::memset(end->VERSION, 0, sizeof end->VERSION);
  std::snprintf(end->VERSION, sizeof end->VERSION, "%u.%u.%u.%u", version >> 24, (version >> 16) & 0xFFU,
                (version >> 8) & 0xFFU, version & 0xFFU);
}

// Fills in a far end from its answer, with the version text unchanged.
void takeAnswer(const uint8_t* response, QVR_inventoryParameters_t* end) {
  copyField(end->SYSTEM_VENDOR, response + INVENTORY_RESPONSE_VENDOR_ID);
  copyField(end->VERSION, response + INVENTORY_RESPONSE_VERSION_NUMBER);
  copyField(end->SERIALNR, response + INVENTORY_RESPONSE_SERIAL_NUMBER);
}

}  // namespace

QVR_retval_t QVR_getInventoryFarEnd(QVR_lineId_t xi_lineId, QVR_inventoryParameters_t* xo_inventory) {
  uint8_t response[INVENTORY_RESPONSE_SIZE] = {};
  const QVR_retval_t status =
      askFarEnd(xi_lineId, MGMT_FAR_END_REQ_TYPE_INVENTORY, response, sizeof response);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  std::memset(xo_inventory->GHS_VENDOR, 0, sizeof xo_inventory->GHS_VENDOR);
  takeAnswer(response, xo_inventory);
  if (QVR_lineDescriptorForLine(xi_lineId).isDPsideLink != FALSE) {
    rewriteVersion(VersionForm::kFourNumbers, xo_inventory->VERSION);
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_getInventory(QVR_lineId_t xi_lineId, QVR_inventoryObject_t* xo_inventory) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (line.deviceId == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  uint8_t area[NE_AND_FE_INVENTORY_SIZE] = {};
  const QVR_retval_t status = QVR_readmem(
      line.deviceId, VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(line.narrowLineID), area, sizeof area);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  if (line.isDPsideLink != FALSE) {
    takeLocalEnd(area, &xo_inventory->FTU_O);
    takeAnswer(area + INVENTORY_DB_SIZE, &xo_inventory->FTU_R);
    copyField(xo_inventory->FTU_R.GHS_VENDOR, area + INVENTORY_DB_FTU_VENDOR);
    rewriteVersion(VersionForm::kThreeNumbers, xo_inventory->FTU_R.VERSION);
    return QVR_E_STATUS_OK;
  }
  takeLocalEnd(area, &xo_inventory->FTU_R);
  const QVR_retval_t farEnd = QVR_getInventoryFarEnd(xi_lineId, &xo_inventory->FTU_O);
  if (QVR_STATUS_OK(farEnd)) {
    copyField(xo_inventory->FTU_O.GHS_VENDOR, area + INVENTORY_DB_FTU_GHS_VENDOR);
  }
  return farEnd;
}

QVR_retval_t QVR_setInventoryParams(QVR_deviceId_t xi_deviceId,
                                    const QVR_inventoryParameters_t* xi_inventory) {
  uint8_t record[INVENTORY_DB_SIZE] = {};
  const QVR_retval_t status = QVR_readmem(xi_deviceId, VIRT_BASE_ADDR_INVENTORY_READ, record, sizeof record);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  std::memcpy(record + INVENTORY_DB_SYSTEM_VENDOR, xi_inventory->SYSTEM_VENDOR,
              sizeof xi_inventory->SYSTEM_VENDOR);
  std::memcpy(record + INVENTORY_DB_SYSTEM_SERIAL, xi_inventory->SERIALNR, sizeof xi_inventory->SERIALNR);
  return QVR_writemem(xi_deviceId, VIRT_BASE_ADDR_INVENTORY_READ, record, sizeof record);
}
