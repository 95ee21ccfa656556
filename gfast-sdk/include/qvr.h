// The device-management library's public face: types, limits, result codes and every QVR_ operation.
//
// The library manages one or two G.fast (Recommendation ITU-T G.9701) modem chips, the "devices", one line
// each. Operations answer a QVR_retval_t and write warnings to the trace log; they never print to a session.
// A device or line id out of range is a mistake of the caller and ends the process through DoAssert: check
// ids first. Parameters carry their direction: xi_ in, xo_ out, xio_ both.
#pragma once

#include <qvr/configuration.h>
#include <qvr/counters.h>
#include <qvr/devices.h>
#include <qvr/history.h>
#include <qvr/lines.h>
#include <qvr/memory.h>
#include <qvr/notifications.h>
#include <qvr/parameters.h>
#include <qvr/signals.h>
#include <qvr/status.h>
#include <qvr/tones.h>
#include <qvr/trace_log.h>
#include <qvr/types.h>
#include <qvr/version.h>
