// What the chips say by themselves, and the quarter hours of the clock.
#pragma once

#include <gfast_api.h>
#include <qvr/devices.h>
#include <qvr/types.h>
#include <time.h>

QVR_BEGIN_C

#define QVR_K_NULL_HANDLE (-1)             // no slot: any that is free
#define QVR_K_SECS_IN_15MIN_INTERVAL 900U  // a quarter hour

// Callbacks run on the notification thread, without any lock held, and must not block for long: while one
// runs, events, quarter-hour boundaries and the liveness watch of every device wait.
typedef void (*QVR_deviceLinkStateChangeCB)(QVR_lineId_t xi_lineId, G9701_linkState_t xi_oldState,
                                            G9701_linkState_t xi_newState);  // internal line id
typedef void (*QVR_15minCounterEventCB)(time_t xi_boundary);
typedef void (*QVR_linkFailureNotificationCB)(QVR_lineId_t xi_lineId, LINK_FAILURE_TYPE_E xi_reason,
                                              time_t xi_time);  // the line as the chip numbers it
typedef void (*QVR_rebootNotificationCB)(void);
typedef void (*QVR_commFailureNotificationCB)(QVR_deviceId_t xi_deviceId);
typedef void (*QVR_logMessageCB)(QVR_deviceId_t xi_deviceId, const char* xi_text);
typedef void (*QVR_nonCdtaCpeJoinNotificationCB)(QVR_lineId_t xi_lineId);  // internal line id

// Each keeps one callback, replacing the one before; NULL clears it. Safe at any time, from any thread.

// A line changed its state. QVR_initLineModule registers the library's own, which takes the framing of lines
// that reach showtime and tells the observer of QVR_registerlinkStateChangeCB: register there.
void QVR_registerDeviceLinkStateChangeCB(QVR_deviceLinkStateChangeCB xi_callback);

// A line went down. QVR_initFastModule registers the library's own, which tells the callback of
// QVR_registerlineFailuresCB: whoever registers another one keeps that from being called.
void QVR_registerLinkFailureNotificationCB(QVR_linkFailureNotificationCB xi_callback);

// A chip started anew.
void QVR_registerRebootEventCB(QVR_rebootNotificationCB xi_callback);

// A chip did not answer four liveness checks (5 s apart) in a row; called again at every further failed
// check.
void QVR_registerCommFailureNotificationCB(QVR_commFailureNotificationCB xi_callback);

// A CPE without coordinated dynamic time assignment (cDTA) joined a line that uses it.
void QVR_registerNonCdtaCpeJoinNotificationCB(QVR_nonCdtaCpeJoinNotificationCB xi_callback);

// Starts (a callback while none is registered) or ends (NULL) the delivery of the chips' own log messages,
// one call a message. Replacing one callback by another does nothing: end the delivery first. The device id
// is ignored, both devices deliver. Always QVR_E_STATUS_OK: a device that refuses stays silent.
QVR_retval_t QVR_registerLogMessageCB(QVR_deviceId_t xi_deviceId, QVR_logMessageCB xi_callback);

// Two slots for callbacks that run on the notification thread at each quarter-hour boundary.
// QVR_initLineModule takes one of them: use no handle but your own. Handle -1 takes the first free slot and
// answers its index, or -1 when both are taken. Handle 0 or 1 replaces that slot (NULL frees it) and answers
// 0; any other handle changes nothing and answers 0.
int QVR_register15minCounterEventCB(int xi_handle, QVR_15minCounterEventCB xi_callback);

// Seconds left to the next quarter-hour boundary of local time, 1 to 900 (900 at a boundary). Unless NULL,
// *xo_now receives the time this was computed from.
uint32_t QVR_secsTo15minBoundary(time_t* xo_now);

QVR_END_C
