// The lines: start of the library, the line table, states, and the modem at the far end.
#pragma once

#include <gfast_api.h>
#include <qvr/devices.h>
#include <qvr/types.h>

QVR_BEGIN_C

// Starts the library in one call: devices, lines, parameters. Called again after success it does nothing.
//   as QVR_initLineModule, then as QVR_loadConfigParams
QVR_retval_t QVR_initFastModule(QVR_bool_t xi_waitForDevice);

// Does nothing: what a restart needs, the notifications do. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_reInitFastModule(void);

// The library's revision, as a fixed text.
const char* QVR_versionIdent(void);

// Starts the device layer and builds the line table from the devices that answer; it is never built again.
// Called again after success it does nothing.
//   QVR_E_FAILED_REGISTERING_CALLBACK  both quarter-hour slots are taken
//   otherwise as QVR_initDeviceModule
QVR_retval_t QVR_initLineModule(QVR_bool_t xi_waitForDevice);

// The device that carries a line; QVR_K_DEVICE_NULL is never answered on this board. A line id out of range
// is assertion 200.
QVR_deviceId_t QVR_deviceIdforLine(QVR_lineId_t xi_lineId);

// TRUE when the line's chip is at the network (distribution point) side and sends downstream; FALSE at the
// subscriber's side, and for a line whose chip did not answer when the line table was built. The operations
// of a line take their directions from this. A line id out of range is assertion 200.
QVR_bool_t QVR_isNetworkSideLine(QVR_lineId_t xi_lineId);

// Map between the line numbers callers see and positions in the line table. Not range-checked. Until the line
// table is built every internal number maps to 0.
QVR_lineId_t QVR_log2int(QVR_lineId_t xi_logicalId);
QVR_lineId_t QVR_int2log(QVR_lineId_t xi_internalId);

// Asks the device whether the line is in showtime. A device that does not answer is logged as a warning:
// FALSE.
QVR_bool_t QVR_isLineUp(QVR_lineId_t xi_lineId);

// Is told of a line's transition, with the line's logical id.
typedef void (*QVR_LinkStateChangeCB)(QVR_lineId_t xi_lineId, G9701_linkState_t xi_oldState,
                                      G9701_linkState_t xi_newState);

// Keeps one observer, replacing the one before, which sees every transition of every line whatever the mask.
// Runs on the notification thread.
void QVR_registerlinkStateChangeCB(QVR_LinkStateChangeCB xi_callback, QVR_linkStateEventMask_t xi_mask);

// Re-initialises a line that is in showtime; in any other state nothing is written.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR
QVR_retval_t QVR_resetLine(QVR_lineId_t xi_lineId);

// QVR_resetLine of every line; the last failure, or QVR_E_STATUS_OK.
QVR_retval_t QVR_resetLines(void);

// Lets a line train (TRUE) or takes it down and keeps it down (FALSE).
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMWRITE_ERROR  of the last write made
QVR_retval_t QVR_activateLine(QVR_lineId_t xi_lineId, QVR_bool_t xi_activate);

// ---- Far end ----

// Exchanges one management message with the modem at the far end of a line (ITU-T G.9701, eoc).
// xio_message holds xi_requestLength bytes of request and receives up to xi_responseLength bytes of response;
// *xo_responseLength says how many (0 on failure). xi_narrowLineId is the line's index within the device.
//   QVR_E_DEVICE_NOT_EXISTS           the device cannot be opened
//   QVR_E_LINE_NOT_ACTIVE             the line is not in showtime; no request is made
//   QVR_E_FAILED_SENDING_FAR_END_MSG  the driver refused
QVR_retval_t QVR_sendMsgToFarEnd(QVR_deviceId_t xi_deviceId, uint16_t xi_narrowLineId,
                                 MGMT_FAR_END_REQ_TYPE xi_type, void* xio_message, uint32_t xi_requestLength,
                                 uint32_t xi_responseLength, uint32_t* xo_responseLength);

#define QVR_K_MAX_FAR_END_READ 65536U  // bytes

// Reads memory of the modem at the far end of a line in exchanges of at most 512 bytes, each a header of 12
// bytes out and a header with the data back. Between two exchanges others may use the line's eoc. On failure
// the bytes already read stay in the buffer. No bytes make no exchange; more than QVR_K_MAX_FAR_END_READ are
// assertion 200.
//   QVR_E_FAREND_EOC_NACK             the far end refused
//   QVR_E_FAILED_GETTING_FE_DATA      the response is not the piece that was asked for
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_LINE_NOT_ACTIVE, QVR_E_FAILED_SENDING_FAR_END_MSG  as QVR_sendMsgToFarEnd
QVR_retval_t QVR_readmemFarEnd(QVR_lineId_t xi_lineId, uint32_t xi_address, void* xo_buffer,
                               uint32_t xi_numBytes);

QVR_END_C
