// The chips: which are there, what runs on them, and their start and restart.
#pragma once

#include <chip/init_failure_causes.h>
#include <chip/parameter_ids.h>
#include <gfast_api.h>
#include <qvr/types.h>

QVR_BEGIN_C

// The firmware that runs on a chip (bits 23-24 of the software boot register).
QVR_ENUM(QVR_fwState_t){
    FW_UNDEFINED = 0,
    FW_B0 = 1,   // ROM boot stage
    FW_B1 = 2,   // boot loader, from flash or downloaded
    FW_APP = 3,  // application firmware
};

// Whether the library reaches a device.
QVR_ENUM(QVR_deviceState_t){
    SS_INACTIVE_STATE = 0,  // absent or lost
    SS_IDLE_STATE = 1,      // never set, as SS_CONFIG_STATE and SS_RESTARTING
    SS_CONFIG_STATE = 2,
    SS_RUN_STATE = 3,  // the device has answered
    SS_RESTARTING = 4,
};

// Link state of a line (ITU-T G.9701). A line is up only in LS_SHOWTIME.
QVR_ENUM(G9701_linkState_t){
    LS_SELFTEST = 0,      LS_UNIT_FAIL = 1,          LS_IDLE = 2,     LS_SILENT = 3,
    LS_INIT_HS = 4,       LS_INIT_TRAIN = 5,         LS_SHOWTIME = 6, LS_DEACTIVATING1 = 7,
    LS_DEACTIVATING2 = 8, LS_PRE_DEACTIVATING1_E = 9};
typedef G9701_linkState_t QVR_lineState_t;           // state of a line
typedef G9701_linkState_t QVR_linkStateEventMask_t;  // not consulted

// Why a line went down.
typedef LINK_FAILURE_TYPE_E QVR_lineFailureReason_t;

// Version of the firmware.
typedef struct QVR_versionNumber_t {
  // Shown the other way around, as chipset.ga.rc.profile.
  uint8_t versionProfile;
  uint8_t versionRc;
  uint8_t versionGa;
  uint8_t versionChipset;
} QVR_versionNumber_t;

typedef char QVR_dateStr_t[12];       // 11 characters
typedef char QVR_timeStr_t[9];        // 8 characters
typedef uint8_t QVR_macAddress_t[6];  // first byte first
typedef uint32_t QVR_temperature_t;   // degrees Celsius
typedef char G9972_vendorID_t[8];     // ITU-T G.994.1 vendor id bytes, in chip order

// The part of the running quarter hour in which counters are collected.
typedef struct QVR_counterCollectionInterval_t {
  uint32_t startOfCollectionPeriodInInterval;  // seconds before the end of the interval, 0: not set
  uint32_t endOfCollectionPeriodInInterval;    // not used
} QVR_counterCollectionInterval_t;

// What the library knows of a device, as last read and as last told by the chip.
typedef struct QVR_deviceInfo_t {
  QVR_fwState_t fwState;                // which firmware runs
  QVR_deviceState_t deviceState;        // whether it answers
  uint32_t devInfVersion;               // of the device-information image
  QVR_versionNumber_t firmwareVersion;  // of the firmware that runs
  QVR_dateStr_t date;                   // build date of the firmware
  QVR_timeStr_t time;                   // build time; the chip gives its first two characters only
  QVR_macAddress_t mainDFEMacAddress;   // of the chip
  uint8_t numberOfLines;                // always 1
  QVR_bool_t isDPdevice;                // TRUE: network (distribution point) side, chipset 1 or 3
  QVR_lineState_t lineState[QVR_K_MAX_LINES_PER_DEVICE];                  // of each line
  QVR_lineFailureReason_t lineFailureReason[QVR_K_MAX_LINES_PER_DEVICE];  // the last one
  uint32_t lineStartupTime[QVR_K_MAX_LINES_PER_DEVICE];                   // milliseconds
  uint8_t lineIDs[QVR_K_MAX_LINES_PER_DEVICE];  // internal ids in the table, logical ids in a caller's copy
  G9972_initSuccessFailureCause_t
      initsFcause[QVR_K_MAX_LINES_PER_DEVICE];           // how the last initialisation ended
  uint8_t initLastSignalds[QVR_K_MAX_LINES_PER_DEVICE];  // its last signal downstream
  uint8_t initLastSignalus[QVR_K_MAX_LINES_PER_DEVICE];  // its last signal upstream
  QVR_temperature_t temperatureInCelcius;                // of the chip, below zero in two's complement
  G9972_vendorID_t vendorId;                             // for the handshake
  QVR_counterCollectionInterval_t counterCollectionInterval[QVR_K_MAX_LINES_PER_DEVICE];  // of each line
  eConfigState configState;  // line state when bit 15 of the SBR is clear
} QVR_deviceInfo_t;

// Starts the device layer: reads device 0 (mandatory) and device 1 (optional) and starts the notification
// thread. With xi_waitForDevice it tries device 0 once a second until it answers. Called again after success
// it does nothing.
//   QVR_E_ERROR                   device 0 does not answer (without waiting)
//   QVR_E_FAILED_CREATING_THREAD  the notification thread could not be started
QVR_retval_t QVR_initDeviceModule(QVR_bool_t xi_waitForDevice);

// Closes every device, has the driver search for chips, and reads both devices afresh. The notification
// thread waits for descriptors up to the highest one that was open at its start: the events of a device whose
// descriptor is higher now are not seen. Always QVR_E_STATUS_OK, whatever was found.
QVR_retval_t QVR_rediscoverDevices(void);

// The device's descriptor, opened on first use and kept until rediscovery; -1 when it cannot be opened, in
// which case the device's record becomes inactive.
int QVR_deviceHandle(QVR_deviceId_t xi_deviceId);

// The device's record in the table, as last read; its lineIDs are internal ids. The notification thread
// changes lineState behind it: a caller that may run beside that thread takes a copy with QVR_getDeviceInfo.
const QVR_deviceInfo_t* QVR_deviceInfoForDevice(QVR_deviceId_t xi_deviceId);

// TRUE once the device has answered and until it is lost.
QVR_bool_t QVR_isDeviceActive(QVR_deviceId_t xi_deviceId);

// Devices found since start or since the last rediscovery; a device lost and found again counts once more.
uint32_t QVR_numberOfDevices(void);

// Lines per device, 0 until the first device has answered.
uint32_t QVR_numberOfLinesInDevice(void);

// Reads the device's identity and state from the chip into its record and, unless NULL, into
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
QVR_retval_t QVR_checkDeviceReset(void);

QVR_END_C
