#include <cstring>

#include "chip/registers.h"
#include "qvrdev/device_table.h"
#include "qvrfast/line_config.h"
#include "qvrline/line_table.h"
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

// Refuses a value of any other length: it would not fit into the number. If the chip cannot be read, the
// number is the value that was read last.
QVR_retval_t readNumber(QVR_lineId_t lineId, eConstParams id, uint32_t& number) {
  const QVR_paramInfo_t* entry = QVR_getParamDictionaryEntry(id);
  if (entry == nullptr) {
    return QVR_getConfigParam(lineId, id, &number);  // logs that there is none
  }
  if (!isNumber(*entry)) {
    return QVR_E_ERROR;
  }
  if (entry->param_len == sizeof(uint32_t)) {
    return QVR_getConfigParam(lineId, id, &number);
  }
  auto half = static_cast<uint16_t>(number);
  const QVR_retval_t status = QVR_getConfigParam(lineId, id, &half);
  number = half;
  return status;
}

template <typename Field>
QVR_retval_t getLowBits(QVR_lineId_t lineId, eConstParams id, void* field) {
  if (QVR_getParamDictionaryEntry(id) == nullptr) {
    return QVR_E_ERROR;
  }
  uint32_t number = 0;
  const QVR_retval_t status = readNumber(lineId, id, number);
  if (QVR_STATUS_OK(status)) {
    store(field, static_cast<Field>(number));
  }
  return status;
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
  uint32_t samples = 0;
  const QVR_retval_t status = readNumber(lineId, id, samples);
  if (QVR_STATUS_OK(status)) {
    store(field, static_cast<uint8_t>(samples / kSamplesPerCE));
  }
  return status;
}

QVR_retval_t gfast::QVR_getRFIBANDS(QVR_lineId_t lineId, eConstParams id, void* field) {
  G9972_subCarrierIdxRange_t bands[QVR_K_MAX_SUBCARRIER_RANGES] = {};
  QVR_retval_t status = QVR_E_STATUS_OK;
  uint32_t next = id;
  for (G9972_subCarrierIdxRange_t& band : bands) {
    uint32_t startAndStop = 0;
    status = readNumber(lineId, static_cast<eConstParams>(next++), startAndStop);
    band = {static_cast<uint16_t>(startAndStop), static_cast<uint16_t>(startAndStop >> 16)};
  }
  std::memcpy(field, bands, sizeof bands);
  return status;
}

QVR_retval_t gfast::QVR_getBoolParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  uint32_t disabled = 0;
  const QVR_retval_t status = readNumber(lineId, id, disabled);
  if (QVR_STATUS_OK(status)) {
    store<BOOL>(field, disabled == 0 ? TRUE : FALSE);
  }
  return status;
}

QVR_retval_t gfast::QVR_getByteParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  return getLowBits<uint8_t>(lineId, id, field);
}

QVR_retval_t gfast::QVR_getWordParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  return getLowBits<uint16_t>(lineId, id, field);
}

QVR_retval_t gfast::QVR_getLongParam(QVR_lineId_t lineId, eConstParams id, void* field) {
  uint32_t number = 0;
  std::memcpy(&number, field, sizeof number);
  const QVR_retval_t status = readNumber(lineId, id, number);
  store(field, number);
  return status;
}

QVR_retval_t gfast::QVR_getIAT_REIN(QVR_lineId_t lineId, eConstParams id, void* field) {
  constexpr struct {
    uint32_t hertz;
    G9972_IAT_REIN_t rate;
  } kRates[] = {{100, IAT_REIN_100Hz}, {120, IAT_REIN_120Hz}, {300, IAT_REIN_300Hz}, {360, IAT_REIN_360Hz}};
  uint32_t hertz = 0;
  const QVR_retval_t status = readNumber(lineId, id, hertz);
  for (const auto& known : kRates) {
    if (QVR_STATUS_OK(status) && known.hertz == hertz) {
      store(field, known.rate);
    }
  }
  return status;
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
