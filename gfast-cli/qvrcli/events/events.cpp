#include "qvrcli/events/events.h"

#include <fmt/format.h>

#include <array>
#include <atomic>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "qvrcli/events/recent_events.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/link_states.h"
#include "qvrcli/text/local_time.h"
#include "qvrcli/text/standard_output.h"

namespace gfast::console {

namespace {

constexpr const char* downloadStatusName[] = {"DOWNLOAD_NOT_STARTED", "DOWNLOAD_IN_PROGRESS",
                                              "DOWNLOAD_COMPLETE_AND_VALID", "DOWNLOAD_COMMITTED",
                                              "DOWNLOAD_FAILED"};

std::atomic<int> rebootCounter{0};

std::array<std::atomic<uint32_t>, QVR_K_MAX_LINES> lastDownloadStatus{};

// The notification thread writes to the log terminal, and a command replaces it. The writer shares the
// ownership of the file, so that the lock is not held while it writes.
struct LogTerminal {
  std::mutex lock;
  std::shared_ptr<FILE> terminalFd;
};

std::atomic<bool> logShownInSession{false};

// Never destroyed: the notification thread may still write while the process exits.
LogTerminal& logTerminal() {
  static auto& terminal = *new LogTerminal;
  return terminal;
}

std::shared_ptr<FILE> terminal() {
  const std::lock_guard guard(logTerminal().lock);
  return logTerminal().terminalFd;
}

// A log line for the session, which ends each line by itself.
std::string logLine(QVR_deviceId_t device, std::string_view text) {
  while (text.ends_with('\n') || text.ends_with('\r')) {
    text.remove_suffix(1);
  }
  return fmt::format("DFE{:02}: {}", device, text);
}

}  // namespace

void registerEventHandlers() {
  constexpr auto kEveryChange = static_cast<QVR_linkStateEventMask_t>(0);
  QVR_registerlinkStateChangeCB(handleLinkStateChange, kEveryChange);
  QVR_registerRebootEventCB(handleRebootEvent);
  // This takes the place of the callback that makes the library's own failure records, so those who register
  // with QVR_registerlineFailuresCB are told of no failure.
  QVR_registerLinkFailureNotificationCB(handlelinkFailureNotificationEvent);
  QVR_register24hrEventCB(handle24hrEvent);
  QVR_registerCommFailureNotificationCB(handleCommFailureNotificationEvent);
  QVR_registerTraceLogHandlerCB(handleTraceLogMessage);
  QVR_registerNonCdtaCpeJoinNotificationCB(handleNonCdtaCpeJoinNotification);
}

void handleLinkStateChange(QVR_lineId_t xi_lineId, G9701_linkState_t xi_oldState,
                           G9701_linkState_t xi_newState) {
  printWithoutWaiting(fmt::format("Link [{}] state changed from {} to {}\n", xi_lineId,
                                  linkStateString(static_cast<int>(xi_oldState)),
                                  linkStateString(static_cast<int>(xi_newState))));
  rememberLinkState(xi_lineId, xi_oldState, xi_newState);
}

void handleRebootEvent() {
  printWithoutWaiting("Reboot notification...\n");
  rebootCounter++;
  rememberEvent(std::nullopt, "a chip started anew");
  // A device that does not answer counts as one in configuration state: no line is activated.
  QVR_deviceInfo_t device{};
  QVR_getDeviceInfo(QVR_K_DEVICE_ID_FIRST, &device);
  if (device.configState == CONFIG_STATE_LINE) {
    for (QVR_lineId_t line = 0; line <= QVR_K_LINE_ID_LAST; line++) {
      QVR_activateLine(line, TRUE);
    }
  }
}

void handlelinkFailureNotificationEvent(QVR_lineId_t xi_lineId, LINK_FAILURE_TYPE_E xi_reason,
                                        time_t xi_time) {
  printWithoutWaiting(fmt::format("Line failure event on line={} reason={} at time {} ...\n", xi_lineId,
                                  static_cast<int>(xi_reason), localTimeText(xi_time)));
  rememberLineFailure(xi_reason, xi_time);
}

void handleLogMessage(QVR_deviceId_t xi_deviceId, const char* xi_text) {
  const std::shared_ptr<FILE> file = terminal();
  // The session first: once the line is on standard output, it is on its way to the session as well.
  if (!file && logShownInSession) {
    printLater(logLine(xi_deviceId, xi_text).c_str());
  }
  const std::string line = fmt::format("DFE{:02}: {}", xi_deviceId, xi_text);
  if (file) {
    std::fputs(line.c_str(), file.get());
    std::fflush(file.get());
  } else {
    printWithoutWaiting(line);
  }
}

void handle24hrEvent(QVR_lineId_t /*xi_lineId*/, const char* xi_timeStamp, time_t /*xi_time*/) {
  printWithoutWaiting(fmt::format("24 hour event at {}\n", xi_timeStamp));
}

void handleCommFailureNotificationEvent(QVR_deviceId_t xi_deviceId) {
  printWithoutWaiting(fmt::format("Communication failure with DFE{}\n", xi_deviceId));
  rememberEvent(std::nullopt, fmt::format("device {} does not answer", xi_deviceId).c_str());
}

void handleTraceLogMessage(QVR_logSeverity_t /*xi_severity*/, const char* xi_text) {
  printWithoutWaiting(xi_text);
}

void handleNonCdtaCpeJoinNotification(QVR_lineId_t xi_lineId) {
  printWithoutWaiting(fmt::format("non-cDTA CPE joined on line {}\n", xi_lineId));
  rememberEvent(xi_lineId, "a modem without cDTA joined");
}

void handleDownloadStatusNotification(QVR_lineId_t xi_lineId, QVR_downloadStatus_t xi_status) {
  if (xi_lineId < 0 || xi_lineId > QVR_K_LINE_ID_LAST) {
    return;
  }
  const auto status = static_cast<uint32_t>(xi_status);
  if (lastDownloadStatus[static_cast<size_t>(xi_lineId)].exchange(status) == status) {
    return;
  }
  const char* name = status < std::size(downloadStatusName) ? downloadStatusName[status] : "DOWNLOAD_UNKNOWN";
  printWithoutWaiting(fmt::format("Download Status Notification (line={}, status={}\n", xi_lineId, name));
}

int rebootCount() {
  return rebootCounter;
}

void setTerminal(FILE* xi_file) {
  std::shared_ptr<FILE> replaced = xi_file == nullptr ? nullptr : std::shared_ptr<FILE>(xi_file, std::fclose);
  const std::lock_guard guard(logTerminal().lock);
  logTerminal().terminalFd.swap(replaced);
}

void showLogInSession(bool xi_show) {
  logShownInSession = xi_show;
}

}  // namespace gfast::console
