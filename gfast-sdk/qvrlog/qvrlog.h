// Writing to the trace log. Its level and its handler are in qvr.h.
#pragma once

#include <qvr.h>

namespace gfast {

constexpr size_t QVR_K_MAX_LOG_MESSAGE = 256;  // bytes of a message for the handler, terminator included

// Writes one message, "[severity] function:line text", when its severity passes the level. The format
// contains the line end. What a handler receives is cut to QVR_K_MAX_LOG_MESSAGE-1 characters.
void QVR_traceLogMessage(QVR_logSeverity_t xi_severity, const char* xi_function, int xi_line,
                         const char* xi_format, ...) __attribute__((format(printf, 4, 5)));

// The message with the caller's own function name and line.
#define TRACE_LOG(severity, ...) gfast::QVR_traceLogMessage((severity), __func__, __LINE__, __VA_ARGS__)

}  // namespace gfast
