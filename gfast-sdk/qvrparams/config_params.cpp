// Reading and writing parameters, one by one and all at once.

#include <qvr.h>

#include <array>
#include <cstring>

#include "chip/boot_register.h"
#include "chip/parameter_records.h"
#include "qvrline/line_table.h"
#include "qvrlog/qvrlog.h"
#include "qvrparams/covered_memory.h"
#include "qvrparams/dictionary.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kSystemParameterChange = 1U << SBR_SYSTEM_PARAMETER_CHANGE_OFFSET;

using ChipBytes = std::vector<uint8_t>;

// Values of two and four bytes are numbers: in the host's byte order for the caller, little-endian in the
// chip. All other values are copied as they are.
ChipBytes chipBytes(const void* value, size_t length) {
  ChipBytes bytes(length);
  std::memcpy(bytes.data(), value, length);
  if (length == sizeof(uint16_t)) {
    uint16_t number = 0;
    std::memcpy(&number, value, sizeof number);
    store_le16(bytes.data(), number);
  } else if (length == sizeof(uint32_t)) {
    uint32_t number = 0;
    std::memcpy(&number, value, sizeof number);
    store_le32(bytes.data(), number);
  }
  return bytes;
}

void storeValue(const ChipBytes& bytes, void* value) {
  if (bytes.size() == sizeof(uint16_t)) {
    const uint16_t number = load_le16(bytes.data());
    std::memcpy(value, &number, sizeof number);
  } else if (bytes.size() == sizeof(uint32_t)) {
    const uint32_t number = load_le32(bytes.data());
    std::memcpy(value, &number, sizeof number);
  } else {
    std::memcpy(value, bytes.data(), bytes.size());
  }
}

// Reads a range of a device's parameter area into the library's copy.
QVR_retval_t refresh(QVR_paramsDictionary_t& dictionary, QVR_deviceId_t device, uint32_t offset,
                     size_t length) {
  ChipBytes bytes = dictionary.startupParameters.range(offset, length);
  const QVR_retval_t status = readCovered(device, dictionary.params_header.params_address + offset, bytes);
  dictionary.startupParameters.store(offset, bytes);
  return status;
}

// A system parameter is written to both devices. It takes effect after a restart, so a failed write does not
// matter here; the first device notes that a restart is required.
QVR_retval_t writeSystemParameter(const QVR_paramInfo_t& slot, const ChipBytes& bytes) {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    writeCovered(device, slot.param_address, bytes);
  }
  return QVR_readModifyWriteSBR(QVR_K_DEVICE_ID_FIRST, kSystemParameterChange, kSystemParameterChange);
}

bool isSetPerLine(const QVR_paramInfo_t& slot) {
  return slot.param_config_type == CONFIG_TYPE_PER_LINE && slot.param_config_state == CONFIG_STATE_LINE;
}

}  // namespace

QVR_retval_t QVR_getConfigParam(QVR_lineId_t xi_lineId, eConstParams xi_id, void* xo_value) {
  const auto [dictionary, loaded] = loadedDictionary();
  if (QVR_STATUS_ERROR(loaded)) {
    return loaded;
  }
  const QVR_deviceId_t device = QVR_deviceIdforLine(xi_lineId);
  const QVR_paramInfo_t* slot = dictionary.slotOf(xi_id);
  if (slot == nullptr) {
    TRACE_LOG(QVRLOG_WARNING, "Parameter with ID=%1d not found in dictionary\n", static_cast<int>(xi_id));
    return QVR_E_UNSUPPORTED_PARAMETER;
  }
  QVR_retval_t status = refresh(dictionary, device, slot->param_offset, slot->param_len);
  if (QVR_STATUS_ERROR(status)) {
    status = refresh(dictionary, device, slot->param_offset, slot->param_len);
  }
  storeValue(dictionary.startupParameters.range(slot->param_offset, slot->param_len), xo_value);
  return status;
}

QVR_retval_t QVR_setConfigParam(QVR_lineId_t xi_lineId, eConstParams xi_id, const void* xi_value) {
  const auto [dictionary, loaded] = loadedDictionary();
  if (QVR_STATUS_ERROR(loaded)) {
    return loaded;
  }
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  const QVR_paramInfo_t* slot = dictionary.slotOf(xi_id);
  if (slot == nullptr) {
    TRACE_LOG(QVRLOG_WARNING, "Parameter with ID=%1d not found in dictionary\n", static_cast<int>(xi_id));
    return QVR_E_UNSUPPORTED_PARAMETER;
  }
  const ChipBytes bytes = chipBytes(xi_value, slot->param_len);
  if (!dictionary.startupParameters.replace(slot->param_offset, bytes)) {
    return QVR_E_STATUS_OK;
  }
  const uint32_t ownArea = VIRT_ADDR_CONFIG_PER_LINE(line.narrowLineID);
  const QVR_retval_t status = isSetPerLine(*slot)
                                  ? writeCovered(line.deviceId, ownArea + slot->param_offset, bytes)
                                  : writeSystemParameter(*slot, bytes);
  return QVR_STATUS_OK(status) ? status : writeCovered(line.deviceId, slot->param_address, bytes);
}

QVR_retval_t QVR_loadConfigParams(QVR_lineId_t /*xi_lineId*/) {
  const auto [dictionary, loaded] = loadedDictionary();
  return QVR_STATUS_ERROR(loaded)
             ? loaded
             : refresh(dictionary, QVR_K_DEVICE_ID_FIRST, 0, dictionary.startupParameters.size());
}

QVR_retval_t QVR_saveConfigParams(QVR_lineId_t /*xi_lineId*/) {
  const auto [dictionary, loaded] = loadedDictionary();
  return QVR_STATUS_ERROR(loaded)
             ? loaded
             : writeCovered(QVR_K_DEVICE_ID_FIRST, dictionary.params_header.params_address,
                            dictionary.startupParameters.range(0, dictionary.startupParameters.size()));
}

BOOL QVR_systemRestartRequired() {
  std::array<uint8_t, 4> sbr{};
  const QVR_retval_t status = QVR_readmem(QVR_K_DEVICE_ID_FIRST, SBR_REG_ADDRESS, sbr.data(), sbr.size());
  const bool changed = (load_le32(sbr.data()) & kSystemParameterChange) != 0;
  return QVR_STATUS_ERROR(status) || changed ? TRUE : FALSE;
}
