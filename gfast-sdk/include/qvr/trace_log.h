// The trace log: what the library reports of itself.
#pragma once

#include <qvr/types.h>

QVR_BEGIN_C

// Severity of a message, the most severe first.
QVR_ENUM(QVR_logSeverity_t){QVRLOG_CRIT = 0, QVRLOG_ERR = 1, QVRLOG_WARNING = 2, QVRLOG_INFO = 3,
                            QVRLOG_DEBUG = 4};

// Takes one message: a text with its line end, valid during the call.
typedef void (*QVR_traceLogHandlerCB)(QVR_logSeverity_t xi_severity, const char* xi_message);

// Does nothing: the trace log needs no start. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_initTraceLogModule(void);

// Sends every message that passes the level to the handler, instead of standard output. The handler runs on
// the thread that wrote the message. NULL restores standard output.
void QVR_registerTraceLogHandlerCB(QVR_traceLogHandlerCB xi_handler);

// Messages of this severity and the more severe (lower) ones pass. At start: QVRLOG_ERR. Not range-checked.
void QVR_setTraceLogLevel(QVR_logSeverity_t xi_level);
QVR_logSeverity_t QVR_traceLogLevel(void);

// "LOG_CRIT" .. "LOG_DEBUG"; of a level outside 0..4, "LOG_UNKNOWN".
const char* QVR_traceLogLevelString(QVR_logSeverity_t xi_level);

QVR_END_C
