// The entries of the parameter dictionary, and the display names of the parameters.

#include <qvr.h>

#include <array>

#include "qvrparams/dictionary.h"

using namespace gfast;

// The ids are the firmware's: one name too many or too few in their list would move those behind it.
static_assert(PARAMS_disableUsSra == 80);
static_assert(PARAMS_cyclicPrefixSize == 87);
static_assert(PARAMS_RFIBand_15 == 118);
static_assert(PARAMS_enableFlowControl == 123);
static_assert(PARAMS_Last == 130);

// Handed out as it is kept: three words.
static_assert(sizeof(QVR_paramInfo_t) == 12);

namespace {

#define PARAM_NAME(name) #name,
constexpr std::array<const char*, QVR_K_PARAM_NAMES> paramNameTable{
    QVR_NAMED_CONFIG_PARAMS(PARAM_NAME) "???"};
#undef PARAM_NAME

}  // namespace

QVR_retval_t QVR_initParams() {
  return loadedDictionary().status;
}

const QVR_paramInfo_t* QVR_getParamDictionaryEntry(eConstParams xi_id) {
  const auto [dictionary, loaded] = loadedDictionary();
  return QVR_STATUS_ERROR(loaded) ? nullptr : dictionary.slotOf(xi_id);
}

eConfigState QVR_paramConfigState(eConstParams xi_id) {
  const QVR_paramInfo_t* slot = QVR_getParamDictionaryEntry(xi_id);
  return slot != nullptr && slot->param_config_state == CONFIG_STATE_LINE ? CONFIG_STATE_LINE
                                                                          : CONFIG_STATE_SYSTEM;
}

QVR_retval_t QVR_listDictionary(QVR_dictionaryEntryHandlerCB xi_handler) {
  const auto [dictionary, loaded] = loadedDictionary();
  if (QVR_STATUS_ERROR(loaded)) {
    return QVR_E_ERROR;
  }
  const size_t slots = dictionary.numOfEntries();
  for (uint32_t id = 0; id < slots; id++) {
    const QVR_paramInfo_t* slot = dictionary.slotOf(id);
    if (slot != nullptr && xi_handler(id, slot) == FALSE) {
      break;
    }
  }
  return QVR_E_STATUS_OK;
}

const char* QVR_paramName(eConstParams xi_id) {
  return xi_id < paramNameTable.size() ? paramNameTable[xi_id] : paramNameTable.back();
}
