// The device-management library's public face: types, limits, result codes and every QVR_ operation.
//
// The library manages one or two G.fast (Recommendation ITU-T G.9701) modem chips, the "devices", one line
// each. Each header under qvr/ has one subject; this one includes them all but qvr/kernel_driver.h.
// Parameters carry their direction: xi_ in, xo_ out, xio_ both. A pointer may be NULL only where its
// operation says so. A truth value that is given is TRUE (1) or FALSE (0), no other number.
//
// ---- Start ----
//
//   QVR_useKernelDriver();                   of qvr/kernel_driver.h; without it no device can be opened
//   QVR_registerTraceLogHandlerCB(handler);  otherwise errors of the start go to standard output
//   result = QVR_initFastModule(TRUE);       FALSE: do not wait for a device 0 that does not answer
//   QVR_registerRebootEventCB(callback);     and whatever else the program wants to be told
//
// QVR_initFastModule goes through these steps and ends at the first that fails:
//   1. reads device 0, which must answer, and device 1, which may be absent
//   2. starts the notification thread
//   3. builds the table of lines from the devices that answered, once for all
//   4. reads the framing and the counters of each line; a line that cannot be read is no failure
//   5. loads the parameter dictionary and the startup-parameters area from device 0
//   6. starts the history of counters
// After a failure another call does again what has not succeeded, but for the dictionary: one that could not
// be loaded stays so until the process ends.
//
// All state belongs to the process: there is one library in it, and no handle to pass around. Nothing ends
// the library. The notification thread runs, and open descriptors stay open, until the process exits; a child
// made by fork has no notification thread. The thread waits for descriptors below FD_SETSIZE, so a program
// that opens very many files starts the library first. The process's local time zone decides when quarter
// hours and days begin.
//
// ---- Threads ----
//
// Two threads work with the library: the command thread, which is the program's, and the notification thread,
// which is the library's own and calls back.
//
// On one and the same thread, the command thread: the QVR_init operations, QVR_rediscoverDevices,
// QVR_restartDevice, QVR_saveLineConfigState, and all of qvr/signals.h. Every other operation may be called
// from any thread at any time, also while another one runs. Operations that exchange messages with the far
// end of a line wait for each other, all but QVR_sendMsgToFarEnd itself. While devices are rediscovered the
// requests of other threads may fail.
//
// A thread that reads beside a user calls QVR_observeOnly first: what it reads then changes nothing that the
// user is told.
//
// ---- Callbacks ----
//
// They run on the notification thread, but for a trace log handler, which runs on the thread that wrote the
// message (on both at the same time, perhaps), and for QVR_intervalCounterHistoryCB and
// QVR_dictionaryEntryHandlerCB, which run inside the operation that was given them.
//
// While one runs on the notification thread, that thread does nothing else: no event of any device, no
// quarter hour, no check that the chips still answer. So a callback returns soon, within a second as a rule,
// and hands longer work to a thread of the program. It may call every operation that is not the command
// thread's, and register callbacks. It must not throw. A trace log handler calls no operation at all: the
// message may come from the middle of one.
//
// Registering is safe at any time, from any thread. A callback that has just been replaced or cleared may
// still be running, or be called once more.
//
// ---- Pointers ----
//
// Given to an operation: used until it returns; only functions that are registered are kept. Given to a
// callback: valid until it returns; who needs it longer copies it.
// Answered by an operation, and valid until the process ends:
//   QVR_deviceInfoForDevice      the device's record, which changes without a lock when the device is read or
//                                speaks; QVR_getDeviceInfo gives a copy
//   QVR_getParamDictionaryEntry  an entry, which never changes
//   QVR_resultText, QVR_versionIdent, QVR_paramName, QVR_traceLogLevelString  a text, which never changes
//
// ---- Failures ----
//
// Operations answer a QVR_retval_t, which QVR_resultText says in words, and write to the trace log. When
// memory runs out in an operation that does not list QVR_E_FAILED_TO_ALLOCATE_MEMORY, it throws
// std::bad_alloc, which ends a program in C; on the notification thread it ends any program.
//
// A mistake of the caller is no result. It prints an assertion (number, place, message and offending value)
// to standard output and ends the process by a memory-access fault, SIGSEGV:
//   100  a device id out of range. Only QVR_deviceHandle (-1), QVR_sendMsgToFarEnd (QVR_E_DEVICE_NOT_EXISTS)
//        and QVR_registerLogMessageCB (ignored) take any
//   101  QVR_readmem and QVR_writemem: an odd number of bytes
//   200  a line id out of range; QVR_readmemFarEnd: more than QVR_K_MAX_FAR_END_READ bytes. QVR_log2int and
//        QVR_int2log do not check theirs, QVR_loadConfigParams and QVR_saveConfigParams do not use it, and
//        operations that need the dictionary answer that it is missing before they look at the line
//   201  QVR_generateRandomTxSignal: no tones
//
// ---- What it prints ----
//
// Standard output: messages of the trace log while no handler is registered, assertions, the line of
// QVR_checkDeviceReset and the numbers of QVR_testAfePerformanceMTPRInLoop. Standard error: the reason why
// QVR_activateImage failed, and, with the kernel driver, what the shell says when the driver's switch for
// QVR_rediscoverDevices is missing.
#pragma once

#include <qvr/configuration.h>
#include <qvr/counters.h>
#include <qvr/devices.h>
#include <qvr/history.h>
#include <qvr/lines.h>
#include <qvr/memory.h>
#include <qvr/notifications.h>
#include <qvr/observing.h>
#include <qvr/parameters.h>
#include <qvr/signals.h>
#include <qvr/status.h>
#include <qvr/tones.h>
#include <qvr/trace_log.h>
#include <qvr/types.h>
#include <qvr/version.h>
