// What is printed about events of chips and lines: on the process's standard output, the terminal that
// started the program. Only log lines may go elsewhere.
#pragma once

#include <qvr.h>

#include <cstdio>
#include <ctime>

namespace gfast::console {

enum QVR_downloadStatus_t : uint32_t {
  QVR_DOWNLOAD_NOT_STARTED = 0,
  QVR_DOWNLOAD_IN_PROGRESS = 1,
  QVR_DOWNLOAD_COMPLETE_AND_VALID = 2,
  QVR_DOWNLOAD_COMMITTED = 3,
  QVR_DOWNLOAD_FAILED = 4
};

// Registers the handlers with the library.
void registerEventHandlers();

// Handlers run on the notification thread, the trace handler on the thread that writes the message.

void handleLinkStateChange(QVR_lineId_t xi_lineId, G9701_linkState_t xi_oldState,
                           G9701_linkState_t xi_newState);

// Counts the reboot and, unless the system is being configured, activates both lines again.
void handleRebootEvent();

void handlelinkFailureNotificationEvent(QVR_lineId_t xi_lineId, LINK_FAILURE_TYPE_E xi_reason,
                                        time_t xi_time);

// A chip's log line, with its own line end or none: goes to the log terminal when one is open, and otherwise
// to standard output and, after showLogInSession(true), to the session as well. `start logging` registers
// it.
void handleLogMessage(QVR_deviceId_t xi_deviceId, const char* xi_text);

void handle24hrEvent(QVR_lineId_t xi_lineId, const char* xi_timeStamp, time_t xi_time);

void handleCommFailureNotificationEvent(QVR_deviceId_t xi_deviceId);

void handleTraceLogMessage(QVR_logSeverity_t xi_severity, const char* xi_text);

void handleNonCdtaCpeJoinNotification(QVR_lineId_t xi_lineId);

// Prints a line's download status when it differs from the one before; a line starts as not started. A line
// id out of range is ignored. Nothing registers it, because no download of this program reports its status.
void handleDownloadStatusNotification(QVR_lineId_t xi_lineId, QVR_downloadStatus_t xi_status);

// Reboot notifications since start.
int rebootCount();

// Where chip log lines go from now on; nullptr sends them to standard output again. The file is closed when
// it has been replaced and no line is being written to it any more.
void setTerminal(FILE* xi_file);

// Whether log lines also go to the session, behind what the running command prints. At start they do not.
void showLogInSession(bool xi_show);

}  // namespace gfast::console
