// Makes a line's configuration from the firmware's parameters: getters that convert a parameter into a field
// of QVR_lineConfig_t, and the saved state of all lines.
#pragma once

#include <qvr.h>

namespace gfast {

// Each getter reads a parameter of a line into a field. If the chip cannot be read, the field gets the value
// that was read last. A parameter that the dictionary does not have, or that is not a number of two or four
// bytes (QVR_E_ERROR), leaves the field as it was.
QVR_retval_t QVR_getMF(QVR_lineId_t lineId, eConstParams id, void* field);  // G9972_MF_t: always MF_36
QVR_retval_t QVR_getCE(QVR_lineId_t lineId, eConstParams id, void* field);  // uint8_t: samples / 16

// 16 G9972_subCarrierIdxRange_t: cleared, then read from 16 parameters, of which id is the first. A warning
// names each that cannot be read. Returns the result of the last read.
QVR_retval_t QVR_getRFIBANDS(QVR_lineId_t lineId, eConstParams id, void* field);
QVR_retval_t QVR_getBoolParam(QVR_lineId_t lineId, eConstParams id, void* field);  // BOOL: TRUE for 0
QVR_retval_t QVR_getByteParam(QVR_lineId_t lineId, eConstParams id, void* field);  // uint8_t: low 8 bits
QVR_retval_t QVR_getWordParam(QVR_lineId_t lineId, eConstParams id, void* field);  // uint16_t: low 16 bits

QVR_retval_t QVR_getLongParam(QVR_lineId_t lineId, eConstParams id, void* field);  // uint32_t: as it is

// G9972_IAT_REIN_t: the enumerator of a rate in Hz. Any other rate leaves the field as it was.
QVR_retval_t QVR_getIAT_REIN(QVR_lineId_t lineId, eConstParams id, void* field);

// BOOL: read from the chip if the line is in showtime, otherwise FALSE. The id is not used.
QVR_retval_t QVR_getRtxTestMode(QVR_lineId_t lineId, eConstParams id, void* field);
QVR_retval_t QVR_getTpsTestMode(QVR_lineId_t lineId, eConstParams id, void* field);
QVR_retval_t QVR_getDraTestMode(QVR_lineId_t lineId, eConstParams id, void* field);  // always FALSE

// A field of the record, its parameter, and how it is read and written; nullptr where it is not.
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

// What QVR_saveLineConfigState has saved. Used by the command thread only.
const savedLineDb_t& savedLineDb();

}  // namespace gfast
