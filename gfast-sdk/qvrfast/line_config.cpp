// Reads the configuration of a line field by field, as one table says, and saves it for comparison.
#include "qvrfast/line_config.h"

#include <array>
#include <cstddef>

#include "qvrdev/device_table.h"
#include "qvrline/line_table.h"
#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

savedLineDb_t saved{};  // used by the command thread only

#define FIELD(name) offsetof(QVR_lineConfig_t, name)

// No row has a setter: nothing is written to the chip. One vectoring flag and one limit of the bit loading
// fill the fields of both directions.
constexpr std::array<QVR_lineConfigParamTable_t, 19> lineConfigParamTable{{
    {FIELD(tddProfile.MF), PARAMS_numTxSymbolsInFrame, QVR_getMF, nullptr},
    {FIELD(tddProfile.Mds), PARAMS_numDownstreamSymbols, QVR_getByteParam, nullptr},
    {FIELD(tddProfile.CE), PARAMS_cyclicPrefixSize, QVR_getCE, nullptr},
    {FIELD(rfiProfile.RFIBANDS), PARAMS_RFIBand_0, QVR_getRFIBANDS, nullptr},
    {FIELD(rfiProfile.IARBANDS), PARAMS_IARBands, QVR_getLongParam, nullptr},
    {FIELD(noiseMarginProfile.TARSNRMds), PARAMS_dsMargin, QVR_getWordParam, nullptr},
    {FIELD(noiseMarginProfile.TARSNRMus), PARAMS_usMargin, QVR_getWordParam, nullptr},
    {FIELD(vectoringProfile.FEXT_CANCEL_ENABLEds), PARAMS_vectoringEnabled, QVR_getByteParam, nullptr},
    {FIELD(vectoringProfile.FEXT_CANCEL_ENABLEus), PARAMS_vectoringEnabled, QVR_getByteParam, nullptr},
    {FIELD(sraProfile.SRA_ENABLEds), PARAMS_disableDsSra, QVR_getBoolParam, nullptr},
    {FIELD(sraProfile.SRA_ENABLEus), PARAMS_disableUsSra, QVR_getBoolParam, nullptr},
    {FIELD(retransmissionProfile.INPMIN_REINds), PARAMS_ds_INP_min_rein, QVR_getByteParam, nullptr},
    {FIELD(retransmissionProfile.INPMIN_REINus), PARAMS_us_INP_min_rein, QVR_getByteParam, nullptr},
    {FIELD(retransmissionProfile.IAT_REINds), PARAMS_ds_fREIN, QVR_getLongParam, nullptr},
    {FIELD(retransmissionProfile.IAT_REINus), PARAMS_us_fREIN, QVR_getLongParam, nullptr},
    {FIELD(retransmissionProfile.SHINERATIOds), PARAMS_ds_shine_oh, QVR_getByteParam, nullptr},
    {FIELD(retransmissionProfile.SHINERATIOus), PARAMS_us_shine_oh, QVR_getByteParam, nullptr},
    {FIELD(dataRateProfile.BLUPPERLIMITds), PARAMS_blUpperLimit, QVR_getByteParam, nullptr},
    {FIELD(dataRateProfile.BLUPPERLIMITus), PARAMS_blUpperLimit, QVR_getByteParam, nullptr},
}};

#undef FIELD

}  // namespace

QVR_retval_t QVR_getLineConfig(QVR_lineId_t xi_lineId, QVR_lineConfig_t* xo_config) {
  if (const QVR_retval_t status = QVR_loadConfigParams(xi_lineId); QVR_STATUS_ERROR(status)) {
    return status;
  }
  auto* config = reinterpret_cast<uint8_t*>(xo_config);
  for (const QVR_lineConfigParamTable_t& row : lineConfigParamTable) {
    if (row.getParam != nullptr &&
        QVR_STATUS_ERROR(row.getParam(xi_lineId, row.paramId, config + row.addressOffset))) {
      TRACE_LOG(QVRLOG_WARNING, "Failed getting parameter %d\n", static_cast<int>(row.paramId));
    }
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_setLineConfig(QVR_lineId_t xi_lineId, const QVR_lineConfig_t* xi_config) {
  QVR_lineConfig_t current{};
  if (const QVR_retval_t status = QVR_getLineConfig(xi_lineId, &current); QVR_STATUS_ERROR(status)) {
    return status;
  }
  const auto* config = reinterpret_cast<const uint8_t*>(xi_config);
  for (const QVR_lineConfigParamTable_t& row : lineConfigParamTable) {
    if (row.setParam != nullptr) {
      row.setParam(xi_lineId, row.paramId, config + row.addressOffset);
    }
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_saveLineConfigState() {
  QVR_retval_t status = QVR_E_STATUS_OK;
  for (QVR_lineId_t line = 0; line <= QVR_K_LINE_ID_LAST && QVR_STATUS_OK(status); line++) {
    const QVR_lineDescriptor_t descriptor = QVR_lineDescriptorForLine(line);
    saved.savedLineState[line] = deviceRecord(descriptor.deviceId).lineState[descriptor.narrowLineID];
    status = QVR_getLineConfig(line, &saved.savedLineConfig[line]);
  }
  return status;
}

const savedLineDb_t& gfast::savedLineDb() {
  return saved;
}

QVR_retval_t QVR_restoreSystemConfigState() {
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_restoreLineConfigState() {
  return QVR_E_STATUS_OK;
}
