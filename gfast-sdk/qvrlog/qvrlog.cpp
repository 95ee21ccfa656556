#include "qvrlog/qvrlog.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <iterator>

#include "std/callback_slot.h"
#include "std/observing.h"

using namespace gfast;

namespace {

std::atomic<uint32_t> log_level{QVRLOG_ERR};
constinit CallbackSlot<QVR_traceLogHandlerCB> trace_log_handler;

constexpr const char* kSeverityNames[] = {"LOG_CRIT", "LOG_ERR", "LOG_WARNING", "LOG_INFO", "LOG_DEBUG"};

}  // namespace

QVR_retval_t QVR_initTraceLogModule() {
  return QVR_E_STATUS_OK;
}

void QVR_registerTraceLogHandlerCB(QVR_traceLogHandlerCB xi_handler) {
  trace_log_handler.store(xi_handler);
}

void QVR_setTraceLogLevel(QVR_logSeverity_t xi_level) {
  log_level = static_cast<uint32_t>(xi_level);
}

QVR_logSeverity_t QVR_traceLogLevel() {
  return static_cast<QVR_logSeverity_t>(log_level.load());
}

const char* QVR_traceLogLevelString(QVR_logSeverity_t xi_level) {
  const auto level = static_cast<uint32_t>(xi_level);
  return level < std::size(kSeverityNames) ? kSeverityNames[level] : "LOG_UNKNOWN";
}

void gfast::QVR_traceLogMessage(QVR_logSeverity_t xi_severity, const char* xi_function, int xi_line,
                                const char* xi_format, ...) {
  if (observing || static_cast<uint32_t>(xi_severity) > log_level) {
    return;
  }
  const int reason = errno;  // the caller may still need it
  va_list arguments;
  va_start(arguments, xi_format);
  const char* severity = QVR_traceLogLevelString(xi_severity);
  if (const QVR_traceLogHandlerCB handler = trace_log_handler.load()) {
    char message[QVR_K_MAX_LOG_MESSAGE];
    const int written = std::snprintf(message, sizeof message, "[%s] %s:%d ", severity, xi_function, xi_line);
    const size_t used = written < 0 ? 0 : static_cast<size_t>(written);
    if (used < sizeof message) {
      std::vsnprintf(message + used, sizeof message - used, xi_format, arguments);
    }
    handler(xi_severity, message);
  } else {
    flockfile(stdout);  // a message is not mixed with one of another thread
    std::printf("[%s] %s:%d ", severity, xi_function, xi_line);
    std::vprintf(xi_format, arguments);
    funlockfile(stdout);
  }
  va_end(arguments);
  errno = reason;
}
