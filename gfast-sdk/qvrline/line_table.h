// The lines of the system: which device carries each, under which index, and how it is framed. The command
// thread and the notification thread both use the table; one lock guards it and is never held across a driver
// request.
#pragma once

#include <qvr.h>

namespace gfast {

struct QVR_intervalCounterDB_t {
  G9972_PM_COUNTERS_S curr15minSnapshot;  // the latest read
  G9972_PM_COUNTERS_S prev15minSnapshot;  // at the start of the running quarter hour
};

struct QVR_lineDescriptor_t {
  QVR_deviceId_t deviceId;
  uint32_t narrowLineID;  // index of the line within its device
  uint32_t broadLineID;   // number of the line in the system
  BOOL isDPsideLink;      // the device is at the network side
  // Framing, meaningful once the line has been in showtime.
  QVR_linePhyParams_t phyParams;
  uint32_t dsCodeWordSize;  // Reed-Solomon framing, bytes
  uint32_t dsNumCodeWords;
  uint32_t dsRsRedundancy;
  uint32_t usCodeWordSize;
  uint32_t usNumCodeWords;
  uint32_t usRsRedundancy;
  uint32_t txLogicalFrameNumSym;  // symbols a logical frame
  uint32_t rxLogicalFrameNumSym;
  QVR_intervalCounterDB_t counters;
};

// A copy of the line's descriptor as it is at this moment. A line id out of range is assertion 200.
QVR_lineDescriptor_t QVR_lineDescriptorForLine(QVR_lineId_t lineId);

constexpr const char* kLineLayer = "../qvrline";  // the line layer's name in assertions

// Ends the process in assertion 200 when the line id is out of range.
void requireLine(QVR_lineId_t lineId);

// Puts a line that a device carries into the table, at its internal number.
void addLine(QVR_lineId_t internalId, QVR_deviceId_t deviceId, uint32_t narrowLine, BOOL isDPside);

// Lines found on present devices.
uint32_t numberOfLines();

// Sets the number of lines to zero, before the table is built.
void clearNumberOfLines();

// Stores the framing that the line's framer reports.
void storeFraming(QVR_lineId_t lineId, const GFAST_FRAMER_INIT_COUNTERS_S& framing);

// Stores both snapshots of the line's performance counters. A quarter hour starts with them.
void storeCounters(QVR_lineId_t lineId, const QVR_intervalCounterDB_t& counters);

// Stores the latest read of a query. Does nothing between the closing read and the next start.
void storeLatestCounters(QVR_lineId_t lineId, const G9972_PM_COUNTERS_S& latest);

// Stores the read that closes the quarter hour.
void storeClosingCounters(QVR_lineId_t lineId, const G9972_PM_COUNTERS_S& latest);

// The next quarter hour starts at the closing read, so nothing is counted twice or lost between the two. Does
// nothing when the quarter hour has not been closed.
void startQuarterHour(QVR_lineId_t lineId);

// Moves the unavailable seconds at the start of the running quarter hour, if they are still those before:
// another quarter hour may have started in the meantime.
void moveUnavailableSecondsStart(QVR_lineId_t lineId, uint32_t before, uint32_t after);

// Fills the map from internal to logical line numbers, the inverse of the fixed one.
void buildLineNumberMap();

}  // namespace gfast
