#include <cstring>
#include <optional>

#include "chip/registers.h"
#include "qvrdev/device_table.h"
#include "qvrfast/line_config.h"
#include "qvrline/line_table.h"
#include "qvrlog/qvrlog.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kSamplesPerCE = 16;

template <typename Field>
void store(void* field, Field value) {
  std::memcpy(field, &value, sizeof value);
}

bool isNumber(const QVR_paramInfo_t& entry) {
  return entry.param_len == sizeof(uint16_t) || entry.param_len == sizeof(uint32_t);
}

struct Number {
  QVR_retval_t status;
  std::optional<uint32_t> value;  // none when the dictionary does not have it as a number

  bool isOld() const { return QVR_STATUS_ERROR(status) && value.has_value(); }
};

// Refuses a value of any other length: it would not fit into the number. If the chip cannot be read, the
// number is the value that was read last.
Number readNumber(QVR_lineId_t lineId, eConstParams id) {
  uint32_t whole = 0;
  const QVR_paramInfo_t* entry = QVR_getParamDictionaryEntry(id);
  if (entry == nullptr) {
    return {QVR_getConfigParam(lineId, id, &whole), std::nullopt};  // logs that there is none
  }
  if (!isNumber(*entry)) {
    return {QVR_E_ERROR, std::nullopt};
  }
  if (entry->param_len == sizeof whole) {
    const QVR_retval_t status = QVR_getConfigParam(lineId, id, &whole);
    return {status, whole};
  }
  uint16_t half = 0;
  const QVR_retval_t status = QVR_getConfigParam(lineId, id, &half);
  return {status, half};
}

template <typename Field>
QVR_retval_t getLowBits(QVR_lineId_t lineId, eConstParams id, void* field) {
  if (QVR_getParamDictionaryEntry(id) == nullptr) {
    return QVR_E_ERROR;
  }
  const Number number = readNumber(lineId, id);
  if (number.value) {
    store(field, static_cast<Field>(*number.value));
  }
  return number.status;
}

QVR_retval_t getTestMode(QVR_lineId_t lineId, uint32_t (*addressOf)(uint32_t linkId), void* field) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(lineId);
  if (deviceRecord(line.deviceId).lineState[line.narrowLineID] != LS_SHOWTIME) {
    store<BOOL>(field, FALSE);
    return QVR_E_STATUS_OK;
  }
  uint8_t word[4] = {};
  const QVR_retval_t status = QVR_readmem(line.deviceId, addressOf(line.narrowLineID), word, sizeof word);
  if (QVR_STATUS_OK(status)) {
    store<BOOL>(field, load_le32(word) != 0 ? TRUE : FALSE);
  }
  return status;
}

}  // namespace

QVR_retval_t gfast::QVR_getMF(QVR_lineId_t /*lineId*/, eConstParams /*id*/, void* field) {
  store(field, MF_36);
  return QVR_E_STATUS_OK;
}

QVR_retval_t gfast::QVR_getCE(QVR_lineId_t lineId, eConstParams id, void* field) {
  const Number samples = readNumber(lineId, id);
  if (samples.value) {
    store(field, static_cast<uint8_t>(*samples.value / kSamplesPerCE));
  }
  return samples.status;
}

QVR_retval_t gfast::QVR_getRFIBANDS(QVR_lineId_t lineId, eConstParams id, void* field) {
  G9972_subCarrierIdxRange_t bands[QVR_K_MAX_SUBCARRIER_RANGES] = {};
  QVR_retval_t status = QVR_E_STATUS_OK;
  uint32_t next = id;
  for (G9972_subCarrierIdxRange_t& band : bands) {
    const uint32_t bandId = next++;
    const Number startAndStop = readNumber(lineId, static_cast<eConstParams>(bandId));
    if (startAndStop.isOld()) {
      TRACE_LOG(QVRLOG_WARNING, "Failed getting parameter %d\n", static_cast<int>(bandId));
    }
    const uint32_t value = startAndStop.value.value_or(0);
    band = {static_cast<uint16_t>(value), static_cast<uint16_t>(value >> 16)};
    status = startAndStop.status;
  }
  std::memcpy(field, bands, sizeof bands);
  return status;
}

QVR_retval_t gfast::QVR_getBoolParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  const Number disabled = readNumber(lineId, id);
  if (disabled.value) {
    store<BOOL>(field, *disabled.value == 0 ? TRUE : FALSE);
  }
  return disabled.status;
}

QVR_retval_t gfast::QVR_getByteParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  return getLowBits<uint8_t>(lineId, id, field);
}

QVR_retval_t gfast::QVR_getWordParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  return getLowBits<uint16_t>(lineId, id, field);
}

QVR_retval_t gfast::QVR_getLongParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  const Number number = readNumber(lineId, id);
  if (number.value) {
    store(field, *number.value);
  }
  return number.status;
}

QVR_retval_t gfast::QVR_getIAT_REIN(QVR_lineId_t lineId, eConstParams id, void* field) {
  constexpr struct {
    uint32_t hertz;
    G9972_IAT_REIN_t rate;
  } kRates[] = {{100, IAT_REIN_100Hz}, {120, IAT_REIN_120Hz}, {300, IAT_REIN_300Hz}, {360, IAT_REIN_360Hz}};
  const Number hertz = readNumber(lineId, id);
  for (const auto& known : kRates) {
    if (known.hertz == hertz.value) {
      store(field, known.rate);
    }
  }
  return hertz.status;
}

QVR_retval_t gfast::QVR_getRtxTestMode(QVR_lineId_t lineId, eConstParams /*id*/, void* field) {
  return getTestMode(lineId, VIRT_ADDR_RTX_TESTMODE, field);
}

QVR_retval_t gfast::QVR_getTpsTestMode(QVR_lineId_t lineId, eConstParams /*id*/, void* field) {
  return getTestMode(lineId, VIRT_ADDR_TPS_TESTMODE, field);
}

QVR_retval_t gfast::QVR_getDraTestMode(QVR_lineId_t /*lineId*/, eConstParams /*id*/, void* field) {
  store<BOOL>(field, FALSE);
  return QVR_E_STATUS_OK;
}
