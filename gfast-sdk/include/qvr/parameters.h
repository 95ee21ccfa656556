// The firmware's start-up parameters, by the dictionary in which a chip says where each of them lies, how
// long it is and what it applies to.
#pragma once

#include <chip/parameter_ids.h>
#include <qvr/types.h>

QVR_BEGIN_C

// Entries of the table of display names; the last one stands for a parameter without a name.
#define QVR_K_PARAM_NAMES 124U

// One parameter, as its dictionary entry describes it.
typedef struct QVR_paramInfo_t {
  uint32_t param_id : 10;           // eConstParams; the index of a slot that is in use
  uint32_t param_len : 9;           // bytes
  uint32_t param_offset : 11;       // bytes from the start of the startup-parameters area
  uint32_t param_config_state : 1;  // eConfigState
  uint32_t param_config_type : 1;   // eConfigType
  uint32_t param_address;           // device address of the value
  uint32_t param_entry : 16;        // position of the entry in the device's list
} QVR_paramInfo_t;

// Longest value an entry can describe, bytes.
#define QVR_K_MAX_PARAM_LEN 0x1FFU

// The dictionary is read from device 0 by the first of these operations and then kept, also across a reboot
// of the device. That operation answers the failure of a reading. When it was the header that could not be
// read, or memory was missing, each later operation answers the same. When it was entries, the later
// operations use those that were read, and read the entries again until that succeeds. What is wrong in a
// dictionary is logged as warnings and left out: an entry that leaves the startup-parameters area, an id that
// comes twice (the later entry counts), words behind the highest id. Of the area, sizes beyond 64 KiB are cut
// to what entries can reach.
//
// The library keeps a copy of the startup-parameters area, through which every value passes.

// Loads the dictionary unless it has been loaded.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  it could not be read
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY               no memory for it or for the copy of the area
QVR_retval_t QVR_initParams(void);

// A parameter's value for callers: a uint16_t when its length is 2, a uint32_t when it is 4, otherwise its
// bytes as the chip has them. At most QVR_K_MAX_PARAM_LEN bytes.
typedef QVR_retval_t (*QVR_getConfigParam_t)(QVR_lineId_t xi_lineId, eConstParams xi_id, void* xo_value);
typedef QVR_retval_t (*QVR_setConfigParam_t)(QVR_lineId_t xi_lineId, eConstParams xi_id,
                                             const void* xi_value);

// Reads a parameter from the startup-parameters area of the line's device, trying twice; that of a line, too.
// When both readings fail *xo_value is what the library last knew.
//   QVR_E_UNSUPPORTED_PARAMETER                   the dictionary does not have it; a warning says so
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  of the second reading
//   otherwise as QVR_initParams
QVR_retval_t QVR_getConfigParam(QVR_lineId_t xi_lineId, eConstParams xi_id, void* xo_value);

// Writes a parameter, unless it is what the library last knew: a parameter per line in line state to the
// line's own area, any other to both devices, which then must be restarted (QVR_systemRestartRequired). When
// that fails it is written to the startup-parameters area of the line's device.
//   QVR_E_UNSUPPORTED_PARAMETER  the dictionary does not have it; a warning says so
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  of the last writing
//   otherwise as QVR_initParams
QVR_retval_t QVR_setConfigParam(QVR_lineId_t xi_lineId, eConstParams xi_id, const void* xi_value);

// Read the whole startup-parameters area of device 0 into the library's copy, and write it back. The line id
// does not matter.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  the area could not be transferred
//   otherwise as QVR_initParams
QVR_retval_t QVR_loadConfigParams(QVR_lineId_t xi_lineId);
QVR_retval_t QVR_saveConfigParams(QVR_lineId_t xi_lineId);

// What the dictionary says of a parameter, for the life of the process; NULL when it has no such parameter
// or could not be loaded.
const QVR_paramInfo_t* QVR_getParamDictionaryEntry(eConstParams xi_id);

// Whether a parameter is set in system configuration state or in line state; CONFIG_STATE_SYSTEM when the
// dictionary does not have it.
eConfigState QVR_paramConfigState(eConstParams xi_id);

// Answers FALSE to end the listing.
typedef QVR_bool_t (*QVR_dictionaryEntryHandlerCB)(uint32_t xi_index, const QVR_paramInfo_t* xi_entry);

// Calls the handler for every parameter of the dictionary in ascending order of ids; xi_index is the id.
//   QVR_E_ERROR  the dictionary could not be loaded
QVR_retval_t QVR_listDictionary(QVR_dictionaryEntryHandlerCB xi_handler);

// The display name of a parameter, such as "bandStart_0"; "???" of one that has none, whose id is
// QVR_K_PARAM_NAMES-1 or higher.
const char* QVR_paramName(eConstParams xi_id);

// TRUE when a system parameter has changed since device 0 started, and when device 0 cannot be asked. Needs
// no dictionary.
QVR_bool_t QVR_systemRestartRequired(void);

QVR_END_C
