#include "qvrline/line_table.h"

#include <array>
#include <atomic>
#include <mutex>
#include <type_traits>

#include "qvrassert/qvrassert.h"

using namespace gfast;

namespace {

constexpr std::array<QVR_lineId_t, QVR_K_MAX_LINES> logicalToInternalPortMappingTable{0, 1};
constinit std::array<std::atomic<QVR_lineId_t>, QVR_K_MAX_LINES> internalToLogicalPortMappingTable{};

struct LineTable {
  std::mutex mutex;
  std::array<QVR_lineDescriptor_t, QVR_K_MAX_LINES> lineTable{};
  std::array<bool, QVR_K_MAX_LINES> closing{};  // the closing read is stored, the next start is not
  uint32_t numberOfLines = 0;
};

// Trivially destructible, so the notification thread may use it until the process ends.
constinit LineTable table;
static_assert(std::is_trivially_destructible_v<LineTable>);

using Locked = std::lock_guard<std::mutex>;

QVR_lineDescriptor_t& descriptor(QVR_lineId_t lineId) {
  return table.lineTable[static_cast<size_t>(QVR_log2int(lineId))];
}

bool& closing(QVR_lineId_t lineId) {
  return table.closing[static_cast<size_t>(QVR_log2int(lineId))];
}

}  // namespace

void gfast::requireLine(QVR_lineId_t lineId) {
  if (lineId < 0 || lineId > QVR_K_LINE_ID_LAST) {
    DoAssert(QVR_K_ASSERT_LINE, kLineLayer, __LINE__, "Invalid Line Identifier", 1, lineId);
  }
}

QVR_lineDescriptor_t gfast::QVR_lineDescriptorForLine(QVR_lineId_t lineId) {
  requireLine(lineId);
  const Locked locked(table.mutex);
  return descriptor(lineId);
}

void gfast::addLine(QVR_lineId_t internalId, QVR_deviceId_t deviceId, uint32_t narrowLine, BOOL isDPside) {
  const Locked locked(table.mutex);
  QVR_lineDescriptor_t& line = table.lineTable[static_cast<size_t>(internalId)];
  line.deviceId = deviceId;
  line.narrowLineID = narrowLine;
  line.broadLineID = static_cast<uint32_t>(internalId);
  line.isDPsideLink = isDPside;
  table.numberOfLines++;
}

uint32_t gfast::numberOfLines() {
  const Locked locked(table.mutex);
  return table.numberOfLines;
}

void gfast::clearNumberOfLines() {
  const Locked locked(table.mutex);
  table.numberOfLines = 0;
}

void gfast::storeFraming(QVR_lineId_t lineId, const GFAST_FRAMER_INIT_COUNTERS_S& framing) {
  const Locked locked(table.mutex);
  QVR_lineDescriptor_t& line = descriptor(lineId);
  line.phyParams = {framing.firstTone, framing.numProcessedTones};
  line.dsCodeWordSize = framing.dsCodeWordSize;
  line.dsNumCodeWords = framing.dsNumCodeWords;
  line.dsRsRedundancy = framing.dsRsRedundancy;
  line.usCodeWordSize = framing.usCodeWordSize;
  line.usNumCodeWords = framing.usNumCodeWords;
  line.usRsRedundancy = framing.usRsRedundancy;
  line.txLogicalFrameNumSym = framing.txLogicalFrameNumSym;
  line.rxLogicalFrameNumSym = framing.rxLogicalFrameNumSym;
}

void gfast::storeCounters(QVR_lineId_t lineId, const QVR_intervalCounterDB_t& counters) {
  const Locked locked(table.mutex);
  descriptor(lineId).counters = counters;
  closing(lineId) = false;
}

void gfast::storeLatestCounters(QVR_lineId_t lineId, const G9972_PM_COUNTERS_S& latest) {
  const Locked locked(table.mutex);
  if (!closing(lineId)) {
    descriptor(lineId).counters.curr15minSnapshot = latest;
  }
}

void gfast::storeClosingCounters(QVR_lineId_t lineId, const G9972_PM_COUNTERS_S& latest) {
  const Locked locked(table.mutex);
  descriptor(lineId).counters.curr15minSnapshot = latest;
  closing(lineId) = true;
}

void gfast::startQuarterHour(QVR_lineId_t lineId) {
  const Locked locked(table.mutex);
  if (closing(lineId)) {
    QVR_intervalCounterDB_t& counters = descriptor(lineId).counters;
    counters.prev15minSnapshot = counters.curr15minSnapshot;
    closing(lineId) = false;
  }
}

void gfast::moveUnavailableSecondsStart(QVR_lineId_t lineId, uint32_t before, uint32_t after) {
  const Locked locked(table.mutex);
  uint32_t& start = descriptor(lineId).counters.prev15minSnapshot.ne.UAS;
  start = start == before ? after : start;
}

void gfast::buildLineNumberMap() {
  for (QVR_lineId_t logical = 0; logical <= QVR_K_LINE_ID_LAST; logical++) {
    internalToLogicalPortMappingTable[static_cast<size_t>(QVR_log2int(logical))] = logical;
  }
}

QVR_deviceId_t QVR_deviceIdforLine(QVR_lineId_t xi_lineId) {
  return QVR_lineDescriptorForLine(xi_lineId).deviceId;
}

BOOL QVR_isNetworkSideLine(QVR_lineId_t xi_lineId) {
  return QVR_lineDescriptorForLine(xi_lineId).isDPsideLink;
}

QVR_lineId_t QVR_log2int(QVR_lineId_t xi_logicalId) {
  return logicalToInternalPortMappingTable[static_cast<size_t>(xi_logicalId)];
}

QVR_lineId_t QVR_int2log(QVR_lineId_t xi_internalId) {
  return internalToLogicalPortMappingTable[static_cast<size_t>(xi_internalId)];
}
