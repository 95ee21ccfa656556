// How a line's configuration is made of the firmware's parameters: getters that turn a parameter into a field
// of QVR_lineConfig_t, and the snapshots of all lines.
#pragma once

#include <qvr.h>

namespace gfast {

// Each takes the line, the parameter, and where the field lies. A failure leaves the field as it was, unless
// noted. A parameter that is no number of two or four bytes is QVR_E_ERROR.
QVR_retval_t QVR_getMF(QVR_lineId_t lineId, eConstParams id, void* field);  // G9972_MF_t: MF_36, unasked
QVR_retval_t QVR_getCE(QVR_lineId_t lineId, eConstParams id, void* field);  // uint8_t: samples / 16

// 16 G9972_subCarrierIdxRange_t from 16 parameters, of which id is the first; cleared before. The result is
// that of the last one.
QVR_retval_t QVR_getRFIBANDS(QVR_lineId_t lineId, eConstParams id, void* field);
QVR_retval_t QVR_getBoolParam(QVR_lineId_t lineId, eConstParams id, void* field);  // BOOL: TRUE of 0
QVR_retval_t QVR_getByteParam(QVR_lineId_t lineId, eConstParams id, void* field);  // uint8_t: low 8 bits
QVR_retval_t QVR_getWordParam(QVR_lineId_t lineId, eConstParams id, void* field);  // uint16_t: low 16 bits

// uint32_t: the parameter as it is. When the chip cannot be read it is what the library last knew.
QVR_retval_t QVR_getLongParam(QVR_lineId_t lineId, eConstParams id, void* field);

// G9972_IAT_REIN_t of a rate in Hz; another rate leaves the field as it was.
QVR_retval_t QVR_getIAT_REIN(QVR_lineId_t lineId, eConstParams id, void* field);

// BOOL, asked of a line in showtime; FALSE of any other. The id does not matter.
QVR_retval_t QVR_getRtxTestMode(QVR_lineId_t lineId, eConstParams id, void* field);
QVR_retval_t QVR_getTpsTestMode(QVR_lineId_t lineId, eConstParams id, void* field);
QVR_retval_t QVR_getDraTestMode(QVR_lineId_t lineId, eConstParams id, void* field);  // FALSE, unasked

// A field of the record and the parameter it comes from and goes to, where it does.
struct QVR_lineConfigParamTable_t {
  uint32_t addressOffset;  // of the field in QVR_lineConfig_t, bytes
  eConstParams paramId;
  QVR_getConfigParam_t getParam;
  QVR_setConfigParam_t setParam;
};

struct savedLineDb_t {
  QVR_lineState_t savedLineState[QVR_K_MAX_LINES];
  QVR_lineConfig_t savedLineConfig[QVR_K_MAX_LINES];
};

// What QVR_saveLineConfigState has kept; the command thread's own.
const savedLineDb_t& savedLineDb();

}  // namespace gfast
