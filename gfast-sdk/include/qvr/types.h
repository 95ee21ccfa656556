// What every operation shares: result codes, identifiers and limits.
#pragma once

#include <gfast_api.h>
#include <stddef.h>
#include <stdint.h>

// Around declarations with C linkage.
#ifdef __cplusplus
#define QVR_BEGIN_C extern "C" {
#define QVR_END_C }
#else
#define QVR_BEGIN_C
#define QVR_END_C
#endif

// Enumerations of 32 bits, as the driver's header has them.
#define QVR_ENUM(name) GFAST_API_ENUM(name)
#define QVR_WORDS GFAST_API_WORDS

QVR_BEGIN_C

// A truth value: one byte, in records as in calls.
typedef uint8_t QVR_bool_t;

// Its usual name and values, unless the including file has its own: then values are tested against 0.
#if !defined(BOOL) && !defined(QVR_NO_BOOL)
typedef QVR_bool_t BOOL;
#endif
#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

// ---- Results ----

// What an operation answers: one of the QVR_E codes below.
typedef uint32_t QVR_retval_t;

QVR_WORDS{
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

// Whether an answer is QVR_E_STATUS_OK, or anything else.
#define QVR_STATUS_OK(status) ((status) == QVR_E_STATUS_OK)
#define QVR_STATUS_ERROR(status) ((status) != QVR_E_STATUS_OK)

// What a result code says, in a few lower-case words such as "device not found"; "unknown result" of any
// other value. The text lives as long as the process.
const char* QVR_resultText(QVR_retval_t xi_result);

// ---- Limits and identifiers ----

typedef int32_t QVR_deviceId_t;  // 0 .. QVR_K_MAX_DEVICES-1
typedef int32_t QVR_lineId_t;    // 0 .. QVR_K_MAX_LINES-1; a logical line id unless called internal

#define QVR_K_MAX_DEVICES 2                           // chips of a board
#define QVR_K_MAX_LINES 2                             // of all devices together
#define QVR_K_MAX_LINES_PER_DEVICE 1                  // of one chip
#define QVR_K_DEVICE_ID_FIRST 0                       // the device that must answer
#define QVR_K_DEVICE_ID_LAST (QVR_K_MAX_DEVICES - 1)  // the highest device id
#define QVR_K_DEVICE_NULL (-1)                        // no device
#define QVR_K_LINE_ID_LAST (QVR_K_MAX_LINES - 1)      // the highest line id
#define QVR_K_UNDEFINED_LINE (-1)                     // no line

QVR_END_C
