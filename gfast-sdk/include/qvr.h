// The device-management library's public face: types, limits, result codes and every QVR_ operation.
//
// The library manages one or two G.fast (Recommendation ITU-T G.9701) modem chips, the "devices", one line
// each. Operations answer a QVR_retval_t and write warnings to the trace log; they never print to a session.
// A device or line id out of range is a mistake of the caller and ends the process through DoAssert: check
// ids first. Parameters carry their direction: xi_ in, xo_ out, xio_ both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "config_params.h"
#include "gfast_api.h"
#include "gfast_counters.h"
#include "line_config.h"
#include "line_status.h"
#include "performance_history.h"
#include "qvr_bool.h"
#include "subcarrier_tables.h"
#include "test_signals.h"

// ---- Results ----

using QVR_retval_t = uint32_t;

enum : QVR_retval_t {
  QVR_E_STATUS_OK = 0,
  QVR_E_ERROR = 1,
  QVR_E_TIMEOUT_ERROR = 2,
  QVR_E_REINIT_ALL_LINES = 3,
  QVR_E_INVALID_LINE_ID = 4,
  QVR_E_REINIT_LINE = 5,
  QVR_E_LINE_NOT_ACTIVE = 6,
  QVR_E_LINE_RESET_ERROR = 7,
  QVR_E_FAILED_GETTING_FE_DATA = 8,
  QVR_E_INVALID_EVENT_FOR_LINK_STATE = 9,
  QVR_E_DATA_NOT_AVAILABLE = 10,
  QVR_E_INVALID_OPERATION = 11,
  QVR_E_MEMREAD_ERROR = 12,
  QVR_E_MEMWRITE_ERROR = 13,
  QVR_E_IMAGE_ACTIVATE_ERROR = 14,
  QVR_E_IMAGE_DOWNLOAD_ERROR = 15,
  QVR_E_ERASE_ERROR = 16,
  QVR_E_NO_DEVICE_FOR_LINE = 17,
  QVR_E_DEVICE_NOT_EXISTS = 18,
  QVR_E_NOT_CURRENTLY_SUPPORTED = 19,
  QVR_E_FAILED_TO_OPEN_FILE = 20,
  QVR_E_FAILED_CREATING_THREAD = 21,
  QVR_E_THREAD_FAILED = 22,
  QVR_E_UNKNOWN_EVENT_TYPE = 23,
  QVR_E_UNDEFINED_FW_STATE = 24,
  QVR_E_INVALID_FW_STATE_B0 = 25,
  QVR_E_INVALID_FW_STATE_FW = 26,
  QVR_E_FLASH_PROGRAM_ERROR = 27,
  QVR_E_FAILED_TO_OPEN_IMAGE_FILE = 28,
  QVR_E_INVALID_FW_STATE = 29,
  QVR_E_UNSUPPORTED_PARAMETER = 30,
  QVR_E_FAILED_TO_ALLOCATE_MEMORY = 31,
  QVR_E_FAILED_SENDING_FAR_END_MSG = 32,
  QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE = 33,
  QVR_E_FAILED_REGISTERING_CALLBACK = 34,
  QVR_E_NO_CHANGE_IN_PARAM_VALUE = 35,
  QVR_E_RESTART_SYSTEM_CONFIG_STATE = 36,
  QVR_E_DEACTIVATE_LINE_STATE = 37,
  QVR_E_INVALID_CONFIG_STATE = 38,
  QVR_E_FAILED_STARTING_LOGGING = 39,
  QVR_E_FAREND_EOC_NACK = 40,
};

constexpr bool QVR_STATUS_OK(QVR_retval_t status) {
  return status == QVR_E_STATUS_OK;
}
constexpr bool QVR_STATUS_ERROR(QVR_retval_t status) {
  return status != QVR_E_STATUS_OK;
}

// ---- Limits and identifiers ----

using QVR_deviceId_t = int32_t;  // 0 .. QVR_K_MAX_DEVICES-1
using QVR_lineId_t = int32_t;    // 0 .. QVR_K_MAX_LINES-1; a logical line id unless called internal

constexpr int QVR_K_MAX_DEVICES = 2;
constexpr int QVR_K_MAX_LINES = 2;
constexpr int QVR_K_MAX_LINES_PER_DEVICE = 1;
constexpr QVR_deviceId_t QVR_K_DEVICE_ID_FIRST = 0;
constexpr QVR_deviceId_t QVR_K_DEVICE_ID_LAST = QVR_K_MAX_DEVICES - 1;
constexpr QVR_deviceId_t QVR_K_DEVICE_NULL = -1;
constexpr QVR_lineId_t QVR_K_LINE_ID_LAST = QVR_K_MAX_LINES - 1;
constexpr QVR_lineId_t QVR_K_UNDEFINED_LINE = -1;

// ---- Trace log ----

enum QVR_logSeverity_t : uint32_t {
  QVRLOG_CRIT = 0,
  QVRLOG_ERR = 1,
  QVRLOG_WARNING = 2,
  QVRLOG_INFO = 3,
  QVRLOG_DEBUG = 4
};

using QVR_traceLogHandlerCB = void (*)(QVR_logSeverity_t xi_severity, const char* xi_message);

// Marks the trace log as started. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_initTraceLogModule();

// Sends every message that passes the level to the handler, instead of standard output. The handler runs on
// the thread that wrote the message. nullptr restores standard output.
void QVR_registerTraceLogHandlerCB(QVR_traceLogHandlerCB xi_handler);

// Messages of this severity and the more severe (lower) ones pass. At start: QVRLOG_ERR. Not range-checked.
void QVR_setTraceLogLevel(QVR_logSeverity_t xi_level);
QVR_logSeverity_t QVR_traceLogLevel();

// "LOG_CRIT" .. "LOG_DEBUG"; of a level outside 0..4, "LOG_UNKNOWN".
const char* QVR_traceLogLevelString(QVR_logSeverity_t xi_level);

// ---- Devices ----

// The firmware that runs on a chip (bits 23-24 of the software boot register).
enum QVR_fwState_t : uint32_t {
  FW_UNDEFINED = 0,
  FW_B0 = 1,  // ROM boot stage
  FW_B1 = 2,  // boot loader, from flash or downloaded
  FW_APP = 3  // application firmware
};

enum QVR_deviceState_t : uint32_t {
  SS_INACTIVE_STATE = 0,  // absent or lost
  SS_IDLE_STATE = 1,
  SS_CONFIG_STATE = 2,
  SS_RUN_STATE = 3,  // the device has answered
  SS_RESTARTING = 4
};

enum eConfigState : uint32_t { CONFIG_STATE_SYSTEM = 0, CONFIG_STATE_LINE = 1 };

// Link state of a line (ITU-T G.9701). A line is up only in LS_SHOWTIME.
enum G9701_linkState_t : uint32_t {
  LS_SELFTEST = 0,
  LS_UNIT_FAIL = 1,
  LS_IDLE = 2,
  LS_SILENT = 3,
  LS_INIT_HS = 4,
  LS_INIT_TRAIN = 5,
  LS_SHOWTIME = 6,
  LS_DEACTIVATING1 = 7,
  LS_DEACTIVATING2 = 8,
  LS_PRE_DEACTIVATING1_E = 9
};
using QVR_lineState_t = G9701_linkState_t;
using QVR_linkStateEventMask_t = G9701_linkState_t;

using QVR_lineFailureReason_t = LINK_FAILURE_TYPE_E;

struct QVR_versionNumber_t {
  uint8_t versionProfile;
  uint8_t versionRc;
  uint8_t versionGa;
  uint8_t versionChipset;
};

using QVR_dateStr_t = char[12];  // 11 characters
using QVR_timeStr_t = char[9];
using QVR_macAddress_t = uint8_t[6];
using QVR_temperature_t = uint32_t;  // degrees Celsius
using G9972_vendorID_t = char[8];    // ITU-T G.994.1 vendor id bytes, in chip order

struct QVR_counterCollectionInterval_t {
  uint32_t startOfCollectionPeriodInInterval;  // seconds before the end of the interval, 0: not set
  uint32_t endOfCollectionPeriodInInterval;
};

struct QVR_deviceInfo_t {
  QVR_fwState_t fwState;
  QVR_deviceState_t deviceState;
  uint32_t devInfVersion;  // of the device-information image
  QVR_versionNumber_t firmwareVersion;
  QVR_dateStr_t date;  // build date of the firmware
  QVR_timeStr_t time;  // build time; the chip gives its first two characters only
  QVR_macAddress_t mainDFEMacAddress;
  uint8_t numberOfLines;  // always 1
  BOOL isDPdevice;        // TRUE: network (distribution point) side, chipset 1 or 3
  QVR_lineState_t lineState[QVR_K_MAX_LINES_PER_DEVICE];
  QVR_lineFailureReason_t lineFailureReason[QVR_K_MAX_LINES_PER_DEVICE];
  uint32_t lineStartupTime[QVR_K_MAX_LINES_PER_DEVICE];  // milliseconds
  uint8_t lineIDs[QVR_K_MAX_LINES_PER_DEVICE];  // internal ids in the table, logical ids in a caller's copy
  G9972_initSuccessFailureCause_t initsFcause[QVR_K_MAX_LINES_PER_DEVICE];
  uint8_t initLastSignalds[QVR_K_MAX_LINES_PER_DEVICE];
  uint8_t initLastSignalus[QVR_K_MAX_LINES_PER_DEVICE];
  QVR_temperature_t temperatureInCelcius;
  G9972_vendorID_t vendorId;
  QVR_counterCollectionInterval_t counterCollectionInterval[QVR_K_MAX_LINES_PER_DEVICE];
  eConfigState configState;  // line state when bit 15 of the SBR is clear
};

// Starts the device layer: reads device 0 (mandatory) and device 1 (optional) and starts the notification
// thread. With xi_waitForDevice it tries device 0 once a second until it answers. Called again after success
// it does nothing.
//   QVR_E_ERROR                   device 0 does not answer (without waiting)
//   QVR_E_FAILED_CREATING_THREAD  the notification thread could not be started
QVR_retval_t QVR_initDeviceModule(BOOL xi_waitForDevice);

// Closes every device, has the driver search for chips, and reads both devices afresh. Always
// QVR_E_STATUS_OK, whatever was found.
QVR_retval_t QVR_rediscoverDevices();

// The device's descriptor, opened on first use and kept until rediscovery; -1 when it cannot be opened, in
// which case the device's record becomes inactive.
int QVR_deviceHandle(QVR_deviceId_t xi_deviceId);

// The device's record in the table, as last read; its lineIDs are internal ids. The notification thread
// changes lineState behind it: a caller that may run beside that thread takes a copy with QVR_getDeviceInfo.
const QVR_deviceInfo_t* QVR_deviceInfoForDevice(QVR_deviceId_t xi_deviceId);

// TRUE once the device has answered and until it is lost.
BOOL QVR_isDeviceActive(QVR_deviceId_t xi_deviceId);

// Devices found since start or since the last rediscovery; a device lost and found again counts once more.
uint32_t QVR_numberOfDevices();

// Lines per device, 0 until the first device has answered.
uint32_t QVR_numberOfLinesInDevice();

// Reads the device's identity and state from the chip into its record and, unless nullptr, into
// *xo_deviceInfo (with logical line ids). On failure the record stays as it was.
//   QVR_E_DEVICE_NOT_EXISTS  the device cannot be opened
//   QVR_E_MEMREAD_ERROR      a read failed
QVR_retval_t QVR_getDeviceInfo(QVR_deviceId_t xi_deviceId, QVR_deviceInfo_t* xo_deviceInfo);

// Whether the chip runs the expected firmware, asked of the chip.
//   QVR_E_INVALID_FW_STATE   it runs another
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  as QVR_readmem
QVR_retval_t QVR_isValidFWState(QVR_deviceId_t xi_deviceId, QVR_fwState_t xi_expected);

// Prints "Reset detected...resetCounter=%d\n" on standard output when device 0 has counted resets.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  as QVR_readmem
QVR_retval_t QVR_checkDeviceReset();

// ---- Chip memory ----

// Reads bytes of chip memory (chip words are little-endian) in requests of at most 900 bytes. A count of 0
// still makes one request. On failure the bytes already read stay in the buffer. An odd count is assertion
// 101.
//   QVR_E_DEVICE_NOT_EXISTS  the device cannot be opened
//   QVR_E_MEMREAD_ERROR      a request failed
QVR_retval_t QVR_readmem(QVR_deviceId_t xi_deviceId, uint32_t xi_address, void* xo_buffer,
                         uint32_t xi_numBytes);

// Writes bytes to chip memory in requests of at most 128 bytes; otherwise as QVR_readmem.
//   QVR_E_DEVICE_NOT_EXISTS  the device cannot be opened
//   QVR_E_MEMWRITE_ERROR     a request failed
QVR_retval_t QVR_writemem(QVR_deviceId_t xi_deviceId, uint32_t xi_address, const void* xi_buffer,
                          uint32_t xi_numBytes);

// Clears the bits of xi_mask in the chip's software boot register and sets those of xi_value (not masked).
// Not atomic against the chip.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  the first failing access
QVR_retval_t QVR_readModifyWriteSBR(QVR_deviceId_t xi_deviceId, uint32_t xi_mask, uint32_t xi_value);

// ---- Firmware ----

// Downloads an image file (read by the driver; names of up to 127 characters) into the chip's RAM.
//   QVR_E_DEVICE_NOT_EXISTS     the device cannot be opened
//   QVR_E_IMAGE_DOWNLOAD_ERROR  the driver refused; errno says why
QVR_retval_t QVR_loadImageFile(QVR_deviceId_t xi_deviceId, const char* xi_filename);

// Starts a downloaded image at a chip address. A failure is also printed with perror.
//   QVR_E_DEVICE_NOT_EXISTS     the device cannot be opened
//   QVR_E_IMAGE_ACTIVATE_ERROR  the driver refused
QVR_retval_t QVR_activateImage(QVR_deviceId_t xi_deviceId, uint32_t xi_startAddress);

// Downloads a boot loader into a chip in its ROM boot stage and starts it at the ROM entry point. Of a
// refused request errno says why.
//   QVR_E_INVALID_FW_STATE  the chip is not in FW_B0
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_IMAGE_DOWNLOAD_ERROR, QVR_E_IMAGE_ACTIVATE_ERROR
QVR_retval_t QVR_loadBootloader(QVR_deviceId_t xi_deviceId, const char* xi_filename);

// Erases one flash sector to 0xFF (or all of flash: FLASHERASE_ALL ignores the address). No state check.
//   QVR_E_DEVICE_NOT_EXISTS  the device cannot be opened
//   QVR_E_ERASE_ERROR        the driver refused
QVR_retval_t QVR_eraseFlashSector(QVR_deviceId_t xi_deviceId, int xi_eraseType, uint32_t xi_address);
QVR_retval_t QVR_eraseFlash(QVR_deviceId_t xi_deviceId);

// Erase a region of flash, 64 KiB sectors in ascending order, stopping at the first failure: application
// firmware 0x20000-0xFFFFF, boot loader 0x00000-0x0FFFF, manufacturer block 0x10000-0x1FFFF.
//   QVR_E_INVALID_FW_STATE  the chip is not in FW_B1
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_ERASE_ERROR
QVR_retval_t QVR_eraseAppFirmware(QVR_deviceId_t xi_deviceId);
QVR_retval_t QVR_eraseBootloader(QVR_deviceId_t xi_deviceId);
QVR_retval_t QVR_eraseManufacturerBlock(QVR_deviceId_t xi_deviceId);

// Erase a region and program it from a file (read by the driver).
//   as the erasures, and QVR_E_FLASH_PROGRAM_ERROR when the driver could not program
QVR_retval_t QVR_upgradeAppFirmware(QVR_deviceId_t xi_deviceId, const char* xi_filename);
QVR_retval_t QVR_upgradeBootloader(QVR_deviceId_t xi_deviceId, const char* xi_filename);
QVR_retval_t QVR_upgradeManufactureBlock(QVR_deviceId_t xi_deviceId, const char* xi_filename);

// Resets the chip into a firmware stage (FW_B0, FW_B1 or FW_APP).
//   QVR_E_ERROR  another state was asked for; nothing is written
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  the boot register could not be
//   changed
QVR_retval_t QVR_rebootDevice(QVR_deviceId_t xi_deviceId, QVR_fwState_t xi_nextState);

// QVR_rebootDevice into FW_APP when xi_reboot is TRUE, into FW_B0 otherwise.
QVR_retval_t QVR_reset(QVR_deviceId_t xi_deviceId, BOOL xi_reboot);

// Moves the whole system between line state and system configuration state.
// From line state it resets the device and waits, without limit, until it answers again (and, with
// xi_waitForConfig, until its line is idle), then rediscovers all devices. From configuration state it ends
// configuration, waiting up to 41 reads of 250 ms for each device; with xi_waitForConfig there is nothing to
// do.
//   QVR_E_ERROR  a device did not reach line state in time
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  a boot register could not be changed
QVR_retval_t QVR_restartDevice(QVR_deviceId_t xi_deviceId, BOOL xi_waitForConfig);

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

// ---- Notifications ----

constexpr int QVR_K_NULL_HANDLE = -1;
constexpr uint32_t QVR_K_SECS_IN_15MIN_INTERVAL = 900;

// Callbacks run on the notification thread, without any lock held, and must not block for long: while one
// runs, events, quarter-hour boundaries and the liveness watch of every device wait.
using QVR_deviceLinkStateChangeCB = void (*)(QVR_lineId_t xi_lineId, G9701_linkState_t xi_oldState,
                                             G9701_linkState_t xi_newState);  // internal line id
using QVR_15minCounterEventCB = void (*)(time_t xi_boundary);
using QVR_linkFailureNotificationCB = void (*)(QVR_lineId_t xi_lineId, LINK_FAILURE_TYPE_E xi_reason,
                                               time_t xi_time);  // the line as the chip numbers it
using QVR_rebootNotificationCB = void (*)();
using QVR_commFailureNotificationCB = void (*)(QVR_deviceId_t xi_deviceId);
using QVR_logMessageCB = void (*)(QVR_deviceId_t xi_deviceId, const char* xi_text);
using QVR_nonCdtaCpeJoinNotificationCB = void (*)(QVR_lineId_t xi_lineId);  // internal line id

// Each keeps one callback, replacing the one before; nullptr clears it. Safe at any time, from any thread.
void QVR_registerDeviceLinkStateChangeCB(
    QVR_deviceLinkStateChangeCB xi_callback);  // a line changed its state
void QVR_registerLinkFailureNotificationCB(QVR_linkFailureNotificationCB xi_callback);  // a line went down
void QVR_registerRebootEventCB(QVR_rebootNotificationCB xi_callback);                   // a chip started anew

// A chip did not answer four liveness checks (5 s apart) in a row; called again at every further failed
// check.
void QVR_registerCommFailureNotificationCB(QVR_commFailureNotificationCB xi_callback);

// A CPE without coordinated dynamic time assignment (cDTA) joined a line that uses it.
void QVR_registerNonCdtaCpeJoinNotificationCB(QVR_nonCdtaCpeJoinNotificationCB xi_callback);

// Starts (a callback while none is registered) or ends (nullptr) the delivery of the chips' own log messages,
// one call a message. Replacing one callback by another does nothing: end the delivery first. The device id
// is ignored, both devices deliver. Always QVR_E_STATUS_OK: a device that refuses stays silent.
QVR_retval_t QVR_registerLogMessageCB(QVR_deviceId_t xi_deviceId, QVR_logMessageCB xi_callback);

// Two slots for callbacks that run on the notification thread at each quarter-hour boundary.
// Handle -1 takes the first free slot and answers its index, or -1 when both are taken. Handle 0 or 1
// replaces that slot (nullptr frees it) and answers 0; any other handle changes nothing and answers 0.
int QVR_register15minCounterEventCB(int xi_handle, QVR_15minCounterEventCB xi_callback);

// Seconds left to the next quarter-hour boundary of local time, 1 to 900 (900 at a boundary). Unless nullptr,
// *xo_now receives the time this was computed from.
uint32_t QVR_secsTo15minBoundary(time_t* xo_now);

// ---- Lines ----

// Starts the library in one call: devices, lines, parameters. Called again after success it does nothing.
//   as QVR_initLineModule, then as QVR_loadConfigParams
QVR_retval_t QVR_initFastModule(BOOL xi_waitForDevice);

// Does nothing: what a restart needs, the notifications do. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_reInitFastModule();

// The library's revision, as a fixed text.
const char* QVR_versionIdent();

// Starts the device layer and builds the line table from the devices that answer; it is never built again.
// Called again after success it does nothing.
//   QVR_E_FAILED_REGISTERING_CALLBACK  both quarter-hour slots are taken
//   otherwise as QVR_initDeviceModule
QVR_retval_t QVR_initLineModule(BOOL xi_waitForDevice);

// The device that carries a line; QVR_K_DEVICE_NULL is never answered on this board. A line id out of range
// is assertion 200.
QVR_deviceId_t QVR_deviceIdforLine(QVR_lineId_t xi_lineId);

// Map between the line numbers callers see and positions in the line table. Not range-checked. Until the line
// table is built every internal number maps to 0.
QVR_lineId_t QVR_log2int(QVR_lineId_t xi_logicalId);
QVR_lineId_t QVR_int2log(QVR_lineId_t xi_internalId);

// Asks the device whether the line is in showtime. A device that does not answer is logged as a warning:
// FALSE.
BOOL QVR_isLineUp(QVR_lineId_t xi_lineId);

using QVR_LinkStateChangeCB = void (*)(QVR_lineId_t xi_lineId, G9701_linkState_t xi_oldState,
                                       G9701_linkState_t xi_newState);

// Keeps one observer, replacing the one before, which sees every transition of every line whatever the mask.
// Runs on the notification thread.
void QVR_registerlinkStateChangeCB(QVR_LinkStateChangeCB xi_callback, QVR_linkStateEventMask_t xi_mask);

// Re-initialises a line that is in showtime; in any other state nothing is written.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR
QVR_retval_t QVR_resetLine(QVR_lineId_t xi_lineId);

// QVR_resetLine of every line; the last failure, or QVR_E_STATUS_OK.
QVR_retval_t QVR_resetLines();

// Lets a line train (TRUE) or takes it down and keeps it down (FALSE).
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMWRITE_ERROR  of the last write made
QVR_retval_t QVR_activateLine(QVR_lineId_t xi_lineId, BOOL xi_activate);

constexpr uint32_t QVR_K_MAX_FAR_END_READ = 65536;  // bytes

// Reads memory of the modem at the far end of a line in exchanges of at most MGMT_MAX_DATA (512) bytes, each
// a header of 12 bytes out and a header with the data back (gfast_api.h). Between two exchanges others may
// use the line's eoc. On failure the bytes already read stay in the buffer. No bytes make no exchange; more
// than QVR_K_MAX_FAR_END_READ are assertion 200.
//   QVR_E_FAREND_EOC_NACK             the far end refused
//   QVR_E_FAILED_GETTING_FE_DATA      the response is not the piece that was asked for
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_LINE_NOT_ACTIVE, QVR_E_FAILED_SENDING_FAR_END_MSG  as QVR_sendMsgToFarEnd
QVR_retval_t QVR_readmemFarEnd(QVR_lineId_t xi_lineId, uint32_t xi_address, void* xo_buffer,
                               uint32_t xi_numBytes);

// ---- Counter blocks (records: gfast_counters.h) ----

// Turns little-endian chip words into values, in place. Bytes behind the last whole word stay as they are.
void QVR_NTOHGfastCounters(void* xio_block, uint32_t xi_lengthInBytes);

// A line's counter blocks at the near end. Each block is converted even when its read failed, but the PM
// block, which is zero then.
//   QVR_E_NO_DEVICE_FOR_LINE                      the line has no device
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  as QVR_readmem
QVR_retval_t QVR_readGfastFramerInitCounters(QVR_lineId_t xi_lineId,
                                             GFAST_FRAMER_INIT_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduInitCounters(QVR_lineId_t xi_lineId, GFAST_FDU_INIT_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFramerRawCounters(QVR_lineId_t xi_lineId, GFAST_FRAMER_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduRawCounters(QVR_lineId_t xi_lineId, GFAST_FDU_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastDerivedCounters(QVR_lineId_t xi_lineId, GFAST_DERIVED_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastETRdbCounters(QVR_lineId_t xi_lineId, ETR_DB_S* xo_counters);
QVR_retval_t QVR_readPerformanceMonitoringCounters(QVR_lineId_t xi_lineId, G9972_PM_COUNTERS_S* xo_counters);

// A line's counter blocks at the far end. A block that was not read whole is zero.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   QVR_E_ERROR               the line is not up
//   otherwise as QVR_readmemFarEnd
QVR_retval_t QVR_readGfastFramerInitCountersFE(QVR_lineId_t xi_lineId,
                                               GFAST_FRAMER_INIT_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduInitCountersFE(QVR_lineId_t xi_lineId, GFAST_FDU_INIT_COUNTERS_S* xo_counters);

// These blocks are completed by what the far end only tells when asked (and, of the framer, by the exchanges
// that the near end counted). Each of those steps stands for itself; the result is that of the last one.
//   QVR_E_NO_DEVICE_FOR_LINE          the line has no device
//   QVR_E_ERROR                       the line is not up
//   QVR_E_FAILED_SENDING_FAR_END_MSG  the last exchange failed
QVR_retval_t QVR_readGfastFramerRawCountersFE(QVR_lineId_t xi_lineId,
                                              GFAST_FRAMER_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastFduRawCountersFE(QVR_lineId_t xi_lineId, GFAST_FDU_RAW_COUNTERS_S* xo_counters);
QVR_retval_t QVR_readGfastDerivedCountersFE(QVR_lineId_t xi_lineId, GFAST_DERIVED_COUNTERS_S* xo_counters);

// What the FTU at the far end counts and measures (ITU-T G.9701). Zero on failure.
//   QVR_E_NO_DEVICE_FOR_LINE          the line has no device
//   QVR_E_FAILED_SENDING_FAR_END_MSG  no exchange, or a response shorter than the record
QVR_retval_t QVR_readFarEndFTUmanagementCounters(QVR_lineId_t xi_lineId,
                                                 G9701_ManagementCounters_t* xo_counters);
QVR_retval_t QVR_readFarEndPMDTestParameters(QVR_lineId_t xi_lineId,
                                             G9701_PMDTestParameters_t* xo_parameters);

// ---- Parameters (ids and dictionary: config_params.h) ----

// The dictionary is read from device 0 by the first of these operations and then kept, also across a reboot
// of the device. When that reading failed, each operation answers its failure from then on. What is wrong in
// a dictionary is logged as warnings and left out: an entry that leaves the startup-parameters area, an id
// that comes twice (the later entry counts), words behind the highest id. Of the area, sizes beyond 64 KiB
// are cut to what entries can reach.
//
// The library keeps a copy of the startup-parameters area, through which every value passes.

// Loads the dictionary unless it has been loaded.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR  it could not be read
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY               no memory for it or for the copy of the area
QVR_retval_t QVR_initParams();

// A parameter's value for callers: a uint16_t when its length is 2, a uint32_t when it is 4, otherwise its
// bytes as the chip has them. At most QVR_K_MAX_PARAM_LEN bytes.
using QVR_getConfigParam_t = QVR_retval_t (*)(QVR_lineId_t xi_lineId, eConstParams xi_id, void* xo_value);
using QVR_setConfigParam_t = QVR_retval_t (*)(QVR_lineId_t xi_lineId, eConstParams xi_id,
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

// What the dictionary says of a parameter, for the life of the process; nullptr when it has no such parameter
// or could not be loaded.
const QVR_paramInfo_t* QVR_getParamDictionaryEntry(eConstParams xi_id);

// Whether a parameter is set in system configuration state or in line state; CONFIG_STATE_SYSTEM when the
// dictionary does not have it.
eConfigState QVR_paramConfigState(eConstParams xi_id);

// Answers FALSE to end the listing.
using QVR_dictionaryEntryHandlerCB = BOOL (*)(uint32_t xi_index, const QVR_paramInfo_t* xi_entry);

// Calls the handler for every parameter of the dictionary in ascending order of ids; xi_index is the id.
//   QVR_E_ERROR  the dictionary could not be loaded
QVR_retval_t QVR_listDictionary(QVR_dictionaryEntryHandlerCB xi_handler);

// The display name of a parameter, such as "bandStart_0"; "???" of one that has none, whose id is
// QVR_K_PARAM_NAMES-1 or higher.
const char* QVR_paramName(eConstParams xi_id);

// TRUE when a system parameter has changed since device 0 started, and when device 0 cannot be asked. Needs
// no dictionary.
BOOL QVR_systemRestartRequired();

// ---- Line configuration (record: line_config.h) ----

// Reads the configuration of a line from the chip's parameters: MF, Mds, CE, RFIBANDS, IARBANDS, TARSNRM,
// FEXT_CANCEL_ENABLE, SRA_ENABLE, INPMIN_REIN, IAT_REIN (the rate in Hz), SHINERATIO and BLUPPERLIMIT. All
// other fields stay as they were, and so does a field that cannot be read, which a warning says.
//   as QVR_loadConfigParams
QVR_retval_t QVR_getLineConfig(QVR_lineId_t xi_lineId, QVR_lineConfig_t* xo_config);

// Reads the configuration of the line; the chip takes none of it back, so nothing is written.
//   as QVR_getLineConfig
QVR_retval_t QVR_setLineConfig(QVR_lineId_t xi_lineId, const QVR_lineConfig_t* xi_config);

// Keeps state and configuration of every line as they are now, up to the first that cannot be read.
//   as QVR_getLineConfig
QVR_retval_t QVR_saveLineConfigState();

// Do nothing. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_restoreSystemConfigState();
QVR_retval_t QVR_restoreLineConfigState();

// ---- Line status and inventory (records: line_status.h) ----

// How the line is, by its device's record as last read and by what the chip and, in showtime, the far end
// measure at present. SNRMds, SNRMus and ACTATPus that are not available are QVR_K_LEVEL_NOT_AVAILABLE; any
// other field whose source cannot be read keeps what it held, but for EWL, which is then that of no time gap
// correction.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device; nothing is filled
//   otherwise as QVR_readGfastFduRawCounters, the last read made: an earlier one that failed is not reported
QVR_retval_t QVR_getLineStatus(QVR_lineId_t xi_lineId, QVR_lineStatus_t* xo_status);

// How the line's last initialisation went, read anew from the device. Nothing is filled on failure.
//   QVR_E_NO_DEVICE_FOR_LINE       the line has no device
//   QVR_E_NOT_CURRENTLY_SUPPORTED  the line's device is at the subscriber side
//   otherwise as QVR_getDeviceInfo
QVR_retval_t QVR_getLineStatusInitialization(QVR_lineId_t xi_lineId,
                                             G9972_initSuccessFailureCause_t* xo_cause,
                                             G9972_initLastSignal_t* xo_lastSignalDs,
                                             G9972_initLastSignal_t* xo_lastSignalUs);

// What the line carries upstream and downstream, in the network's terms. The direction that the device
// transmits needs the far end, and so a line in showtime.
//   as QVR_readGfastDerivedCounters or QVR_readFarEndPMDTestParameters, the first read that failed: the DTU
//   fields are not filled then, nor are the rates unless only the framing could not be read
QVR_retval_t QVR_getChannelStatusus(QVR_lineId_t xi_lineId, QVR_channelStatus_t* xo_status);
QVR_retval_t QVR_getChannelStatusds(QVR_lineId_t xi_lineId, QVR_channelStatus_t* xo_status);

// Who is at both ends: the local end from its own record, the far end from what it last answered (network
// side) or from a new exchange (subscriber side, where the network end's G.hs vendor is the one of the local
// record). The far end's version of the form "number.number.number text" is written anew so that it ends
// within its field; numbers are 0 to 255, and a text of any other form is taken as it is.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   as QVR_readmem (nothing is filled in these two cases), or as QVR_getInventoryFarEnd (FTU_R is filled)
QVR_retval_t QVR_getInventory(QVR_lineId_t xi_lineId, QVR_inventoryObject_t* xo_inventory);

// Who is at the far end, asked anew. Its G.hs vendor is not reported. At the network side a version of the
// form "number.number.number text" is given a fourth number, 0. Nothing is filled on failure.
//   QVR_E_NO_DEVICE_FOR_LINE          the line has no device
//   QVR_E_FAILED_SENDING_FAR_END_MSG  no exchange, or a response shorter than the record
QVR_retval_t QVR_getInventoryFarEnd(QVR_lineId_t xi_lineId, QVR_inventoryParameters_t* xo_inventory);

// Writes SYSTEM_VENDOR and SERIALNR into the device's inventory, bytes as they are; the other fields are not
// used. What the inventory holds beside them is read first and written back.
//   as QVR_readmem and QVR_writemem, of the last access made
QVR_retval_t QVR_setInventoryParams(QVR_deviceId_t xi_deviceId,
                                    const QVR_inventoryParameters_t* xi_inventory);

// ---- Performance counters and their history (records: performance_history.h) ----

// The counters as they stand, since the chip started. Of timeInterval only intervalNumber is set, to 0, and
// by the channel counters nothing.
//   as the counter blocks they are read from
QVR_retval_t QVR_getCurrNELinePerformance(QVR_lineId_t xi_lineId, QVR_linePerformance_t* xo_counters);
QVR_retval_t QVR_getCurrFELinePerformance(QVR_lineId_t xi_lineId, QVR_linePerformance_t* xo_counters);
QVR_retval_t QVR_getCurrNEChannelPerformance(QVR_lineId_t xi_lineId, QVR_ChannelPerformance_t* xo_counters);
QVR_retval_t QVR_getCurrFEChannelPerformance(QVR_lineId_t xi_lineId, QVR_ChannelPerformance_t* xo_counters);

// Intervals that are kept, the running one included.
uint8_t QVR_numberOf15minHistoryIntervals(QVR_lineId_t xi_lineId);
uint8_t QVR_numberOf24hrHistoryIntervals(QVR_lineId_t xi_lineId);

// The running quarter hour and the running day up to now.
//   as QVR_readPerformanceMonitoringCounters
QVR_retval_t QVR_getCurr15minCounters(QVR_lineId_t xi_lineId, QVR_intervalLinkCounterDB_t* xo_interval);
QVR_retval_t QVR_getCurr24hrCounters(QVR_lineId_t xi_lineId, QVR_intervalLinkCounterDB_t* xo_interval);

// A kept interval, counted back from the running one, which is 0.
//   QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE  no such interval is kept; nothing is filled
//   otherwise as the running interval
QVR_retval_t QVR_getPrev15minCounters(QVR_lineId_t xi_lineId, int8_t xi_interval,
                                      QVR_intervalLinkCounterDB_t* xo_interval);
QVR_retval_t QVR_getPrev24hrCounters(QVR_lineId_t xi_lineId, int8_t xi_interval,
                                     QVR_intervalLinkCounterDB_t* xo_interval);

// Answers TRUE to go on to the next older interval.
using QVR_intervalCounterHistoryCB = BOOL (*)(QVR_lineId_t xi_lineId,
                                              QVR_intervalLinkCounterDB_t* xi_interval);

// Every kept interval, newest first, after the running quarter hour has been brought up to date. The callback
// runs on the caller's thread, with copies.
//   as QVR_getCurr15minCounters; otherwise QVR_E_STATUS_OK, also when the callback ended the walk
QVR_retval_t QVR_dump15minCounterHistoryDB(QVR_lineId_t xi_lineId, QVR_intervalCounterHistoryCB xi_callback);
QVR_retval_t QVR_dump24hrCounterHistoryDB(QVR_lineId_t xi_lineId, QVR_intervalCounterHistoryCB xi_callback);

// Run on the notification thread: a line failed, in words of ITU-T G.997.2; a line's day is over. Each keeps
// one callback, nullptr clears it. The records live as long as the call.
using QVR_lineFailureCB = void (*)(QVR_lineId_t xi_lineId, const QVR_lineFailures_t* xi_failures);
using QVR_24hrEventCB = void (*)(QVR_lineId_t xi_lineId, const char* xi_timeStamp, time_t xi_time);
void QVR_registerlineFailuresCB(QVR_lineFailureCB xi_callback);
void QVR_register24hrEventCB(QVR_24hrEventCB xi_callback);

// ---- Subcarrier tables (records: subcarrier_tables.h; chip memory: gfast_tone_memory.h) ----

// Every table is read of a line in showtime, and begins by asking the device whether the line is up and how
// it is framed now:
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device (bit loading only; the others say QVR_E_ERROR)
//   QVR_E_ERROR               the line is not up, or its medley set cannot be: 32 bands or more, or a
//                             subcarrier past 2047
//   otherwise as the read that failed
// Whatever a chip says of them, subcarriers past 2047 are neither asked for nor filled. Outputs are untouched
// on failure, unless said otherwise.

// First processed subcarrier and their number, read anew, of a line in any state. Subcarriers past 2047 are
// not counted.
//   as QVR_readGfastFramerInitCounters
QVR_retval_t QVR_getLinePhyParams(QVR_lineId_t xi_lineId, QVR_linePhyParams_t* xo_params);

// The subcarriers on which the line's chip sends (TRUE) or receives, whatever the line's state.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   QVR_E_ERROR               32 bands or more, or a subcarrier past 2047; the record is filled all the same
//   otherwise as QVR_readmem
QVR_retval_t QVR_getMedleySet(QVR_lineId_t xi_lineId, BOOL xi_isTx, QVR_medleyset_t* xo_set);

// Bits of each subcarrier that the chip sends or receives, of data and of RMC symbols; 0 on a pilot. Of the
// data tables a failed read of the loading itself is no failure: the table is then left as it was.
//   QVR_E_ERROR  also: the RMC tables were replaced during each of 50 readings
QVR_retval_t QVR_readTxBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);
QVR_retval_t QVR_readRxBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);
QVR_retval_t QVR_readTxRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);
QVR_retval_t QVR_readRxRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);

// SNR in dB: at the near end from the first processed subcarrier on, at the far end from its lowest medley
// subcarrier on. Entries past the last are left as they were. A subcarrier without any noise has an infinite
// SNR; one that was not measured, or that the far end has no value for, is not-a-number.
//
// The far end is asked for 248 subcarriers at a time. A block that does not come is asked for ten times in
// all; of those that came before a failure, the entries are filled.
//   QVR_E_ERROR            also: a guard word did not settle within 50 readings, or an energy was not read
//   QVR_E_FAREND_EOC_NACK  the far end refuses
//   QVR_E_FAILED_GETTING_FE_DATA  the last response was not a block of the length asked for
//   QVR_E_LINE_NOT_ACTIVE, QVR_E_FAILED_SENDING_FAR_END_MSG  as QVR_sendMsgToFarEnd, at the last time
QVR_retval_t QVR_readSNRTable(QVR_lineId_t xi_lineId, QVR_SNRTBL_t xo_snr);
QVR_retval_t QVR_readFarEndSNRTable(QVR_lineId_t xi_lineId, QVR_SNRTBL_t xo_snr);

// Receive level in dBm/Hz from the first processed subcarrier on, as the equaliser has it and calibrated for
// the receive path. Each output may be nullptr.
//   as QVR_readmem, or as QVR_readmemFarEnd
QVR_retval_t QVR_readRxSignal(QVR_lineId_t xi_lineId, double* xo_feq, double* xo_calibrated,
                              QVR_AFE_PARAMS_t* xo_afe);
QVR_retval_t QVR_readFarEndRxSignal(QVR_lineId_t xi_lineId, double* xo_feq, double* xo_calibrated,
                                    QVR_AFE_PARAMS_t* xo_afe);

// Level handed to the line driver in dBm/Hz (not-a-number where nothing is sent), and the amplitude of each
// subcarrier before the inverse transform (0 there), from the first processed subcarrier on.
//   as QVR_readmem, or as QVR_readmemFarEnd
QVR_retval_t QVR_readTxSignal(QVR_lineId_t xi_lineId, double* xo_level);
QVR_retval_t QVR_readFarEndTxSignal(QVR_lineId_t xi_lineId, double* xo_level);
QVR_retval_t QVR_readTxFEQ(QVR_lineId_t xi_lineId, QVR_FEQ_t xo_feq);
QVR_retval_t QVR_readFarEndTxFEQ(QVR_lineId_t xi_lineId, QVR_FEQ_t xo_feq);

// Test parameters by subcarrier in the encodings of ITU-T G.997.2, upstream and downstream in the
// network's terms, one entry a subcarrier from 0 on; each direction is measured at the end that receives it.
// SNR, noise and HLOG are rounded to whole decibels. A value beyond its encoding is the nearest it can hold;
// what is no number, was not measured or lies outside the medley set is its encoding's "no value".
//   as the tables they are made of
QVR_retval_t QVR_getLineStatusBITSpsds(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusBITSpsus(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusBITSRMCpsds(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusBITSRMCpsus(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusSNRpsds(QVR_lineId_t xi_lineId, G9972_SNRps_t xo_snr);
QVR_retval_t QVR_getLineStatusSNRpsus(QVR_lineId_t xi_lineId, G9972_SNRps_t xo_snr);
QVR_retval_t QVR_getLineStatusALNpsds(QVR_lineId_t xi_lineId, G9972_ALNps_t xo_noise);
QVR_retval_t QVR_getLineStatusALNpsus(QVR_lineId_t xi_lineId, G9972_ALNps_t xo_noise);

// These say in the trace log, as errors, which reading failed.
QVR_retval_t QVR_getLineStatusHLOGpsds(QVR_lineId_t xi_lineId, G9972_HLOGps_t xo_hlog);
QVR_retval_t QVR_getLineStatusHLOGpsus(QVR_lineId_t xi_lineId, G9972_HLOGps_t xo_hlog);

// Signal attenuation, 0.1 dB: the power sent over the power received, weighted by what the far end sends on
// each subcarrier, for both directions.
//   QVR_E_DATA_NOT_AVAILABLE  there is no subcarrier with an HLOG on which the far end sends
//   otherwise as the HLOG, then as QVR_readFarEndTxFEQ
QVR_retval_t QVR_getSignalAttenuationds(QVR_lineId_t xi_lineId, G9972_SATN_t* xo_attenuation);
QVR_retval_t QVR_getSignalAttenuationus(QVR_lineId_t xi_lineId, G9972_SATN_t* xo_attenuation);

// HLOG from levels sent and received, dBm/Hz, both from the first processed subcarrier on as the line was
// last found to be framed; only the medley set is read.
QVR_retval_t QVR_getLineStatusHLOGps(QVR_lineId_t xi_lineId, const double* xi_sent, const double* xi_received,
                                     G9972_HLOGps_t xo_hlog);

// ---- Expected throughput (ITU-T G.9701) ----

// Of one direction from its framing, kbit/s, single precision. A field of zero that divides gives infinity or
// not-a-number. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_calcTxETR(ETR_DB_S xi_framing, float* xo_etr);
QVR_retval_t QVR_calcRxETR(ETR_DB_S xi_framing, float* xo_etr);
QVR_retval_t QVR_calcTxRawPhyRate(ETR_DB_S xi_framing, float* xo_rate);
QVR_retval_t QVR_calcRxRawPhyRate(ETR_DB_S xi_framing, float* xo_rate);

// Both directions of a line in showtime, kbit/s; the raw rates may be nullptr. At the subscriber side the
// downstream raw rate is computed from what the ETR database has for the transmitter; every other figure from
// the byte counts that the framer has now. Nothing is filled on failure.
//   QVR_E_ERROR  the line is not up
//   otherwise as QVR_readGfastETRdbCounters and QVR_readGfastFramerRawCounters
QVR_retval_t QVR_calcETRsForLine(QVR_lineId_t xi_lineId, float* xo_etrDs, float* xo_etrUs,
                                 float* xo_rawRateDs, float* xo_rawRateUs);

// ---- Vectoring matrices and the analogue front end ----

// Bytes of a coefficient area, as signed 16-bit values in host order; half a value at the end is left out. On
// failure the values already read stay in the buffer.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   QVR_E_ERROR               16 blocks in a row could not be read or were being written
QVR_retval_t QVR_readVectMatrix(QVR_lineId_t xi_lineId, uint32_t xi_address, int16_t* xo_values,
                                uint32_t xi_sizeInBytes);

// Coefficients by pair of subcarriers: a line's pairs begin at element xi_tonePairs * line, so the array
// holds xi_tonePairs elements for each line up to the one asked for. A line's are untouched on failure. A
// chip has QVR_K_MAX_TONE_PAIRS of them; what is read beyond is another area's.
//   as QVR_readVectMatrix
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY  no room to read them
//   QVR_E_ERROR  of all lines: whatever failed first
QVR_retval_t QVR_readCancelerMatrixForLine(QVR_lineId_t xi_lineId, uint16_t xi_tonePairs,
                                           QVR_tonePairMatrix_t* xo_matrices);
QVR_retval_t QVR_readCancelerMatrixForAllLines(uint16_t xi_tonePairs, QVR_tonePairMatrix_t* xo_matrices);
QVR_retval_t QVR_readPrecoderMatrixForLine(QVR_lineId_t xi_lineId, uint16_t xi_tonePairs,
                                           QVR_tonePairMatrix_t* xo_matrices);
QVR_retval_t QVR_readPrecoderMatrixForAllLines(uint16_t xi_tonePairs, QVR_tonePairMatrix_t* xo_matrices);

// Receive gain and mode of the front end at either end of a line in showtime.
// Untouched on failure.
//   QVR_E_ERROR  the line is not up
//   otherwise as QVR_getLinePhyParams, then as QVR_readmem or QVR_readmemFarEnd
QVR_retval_t QVR_getAfeParams(QVR_lineId_t xi_lineId, QVR_AFE_PARAMS_t* xo_afe);
QVR_retval_t QVR_getFarEndAfeParams(QVR_lineId_t xi_lineId, QVR_AFE_PARAMS_t* xo_afe);

// ---- Signal tests (records: test_signals.h, more on them: docs/signal-tests.md) ----

// Start, enter and end the signal tests, which need none of it. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_initTestModule();
QVR_retval_t QVR_enterTestMode();
QVR_retval_t QVR_exitTestMode();

// A test signal from a symbol of QPSK tones 43 to 1972, every twentieth left empty, largest sample 16384. Of
// the symbol's samples only the odd ones are used, each in the high half of a word and in the low half of the
// next one; the low half of the first word is 0. xi_startTone and xi_endTone are not consulted. xo_txSignal
// takes xi_numberOfTones words; with 43 or fewer no tone is loaded and all are 0, and with a number that is
// no power of two the tones are wrong ones.
//   QVR_E_INVALID_OPERATION          xi_numberOfTones is 0 or above QVR_K_SIGNAL_WORDS; nothing is written
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY  no room for the transform; nothing is written
QVR_retval_t QVR_generateRandomTxSignal(uint32_t xi_startTone, uint32_t xi_endTone, uint32_t xi_numberOfTones,
                                        uint32_t* xo_txSignal);

// Puts a signal of QVR_K_SIGNAL_WORDS words, or the default signal for nullptr, into the line's transmit
// buffer. An idle line is activated first, which takes a second, and stays so.
//   as QVR_getDeviceInfo and QVR_writemem
QVR_retval_t QVR_startSignalTransmission(QVR_lineId_t xi_lineId, const uint32_t* xi_txSignal);

// Captures a symbol of QVR_K_SIGNAL_POINTS real samples: the first QVR_K_SIGNAL_WORDS of them, and the
// unitary transform (gain 1/64) of all. An idle line is activated as for sending. A chip that does not report
// the capture within half a second is read all the same. On failure nothing is written.
//   as QVR_getDeviceInfo, QVR_readmem and QVR_writemem
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY  no room for the transform
QVR_retval_t QVR_receiveSignalSnapshot(QVR_lineId_t xi_lineId, QVR_complex_t* xo_timeDomainSignal,
                                       QVR_complex_t* xo_freqDomainSignal);

// Sends on one line, waits 50 ms and captures on the other, or the same.
//   as QVR_startSignalTransmission, then as QVR_receiveSignalSnapshot
QVR_retval_t QVR_testAfeTxRxPath(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                 const uint32_t* xi_txSignal, QVR_complex_t* xo_rxFreqDomainSignal);

// Missing-tone power ratio of each empty tone: the mean power of its neighbours over its own, linear. A tone
// without any power makes it infinite or not a number.
void QVR_calcMTPR(const QVR_complex_t* xi_rxFreqDomainSignal, double* xo_MTPR);

// Both in one: the ratios are linear, and untouched on failure.
//   as QVR_testAfeTxRxPath
QVR_retval_t QVR_testAfePerformanceMTPR(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                        const uint32_t* xi_txSignal, QVR_complex_t* xo_rxFreqDomainSignal,
                                        double* xo_MTPR);

// The same over several captures of the generated signal: xo_rxFreqDomainSignal is the summed power spectrum,
// linear, and the ratios are in dB. Prints the number of each capture to standard output, from 0. Without any
// capture the ratios are not numbers.
//   the last capture's result; a failed one adds the spectrum that the one before it left
QVR_retval_t QVR_testAfePerformanceMTPRInLoop(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                              int xi_numberOfIterations, QVR_complex_t* xo_rxFreqDomainSignal,
                                              double* xo_MTPR);

// Plays a program of a chip: its steps in order, up to the first that fails. What it reads goes to the slots
// of the module's results. A step that neither reads nor writes does nothing; a device id that this system
// cannot have ends the process in assertion "Unknown device handle".
//   as QVR_readmem and QVR_writemem; steps already done are not undone
//   QVR_E_INVALID_OPERATION  a step reads into a slot that there is not
QVR_retval_t QVR_executeProgram(const QVR_instruction_t* xi_program, int xi_programLength);

// Starts a check of the links between chips by a pseudo-random sequence, and tells the errors counted since.
// Their programs address four devices, so on this system they end in the assertion of QVR_executeProgram.
//   as QVR_executeProgram; the record is untouched on failure
QVR_retval_t QVR_startExtcomConnectivityTest();
QVR_retval_t QVR_getExtcomConnectivityTestResults(QVR_extcomPortErrors_t* xo_testResults);
