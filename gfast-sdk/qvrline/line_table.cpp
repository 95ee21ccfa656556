#include "qvrline/line_table.h"

#include <array>

#include "qvrassert/qvrassert.h"

namespace {

constexpr const char* kLineLayer = "../qvrline";  // the line layer's name in assertions

constexpr std::array<QVR_lineId_t, QVR_K_MAX_LINES> logicalToInternalPortMappingTable{0, 1};
constexpr std::array<QVR_lineId_t, QVR_K_MAX_LINES> internalToLogicalPortMappingTable{0, 1};

constexpr std::array<QVR_lineDescriptor_t, QVR_K_MAX_LINES> lineTable{{{0, 0}, {1, 0}}};

}  // namespace

const QVR_lineDescriptor_t& QVR_lineDescriptorForLine(QVR_lineId_t xi_lineId) {
  if (xi_lineId < 0 || xi_lineId > QVR_K_LINE_ID_LAST) {
    DoAssert(QVR_K_ASSERT_LINE, kLineLayer, __LINE__, "Invalid Line Identifier", 1, xi_lineId);
  }
  return lineTable[static_cast<size_t>(QVR_log2int(xi_lineId))];
}

QVR_deviceId_t QVR_deviceIdforLine(QVR_lineId_t xi_lineId) {
  return QVR_lineDescriptorForLine(xi_lineId).deviceId;
}

QVR_lineId_t QVR_log2int(QVR_lineId_t xi_logicalId) {
  return logicalToInternalPortMappingTable[static_cast<size_t>(xi_logicalId)];
}

QVR_lineId_t QVR_int2log(QVR_lineId_t xi_internalId) {
  return internalToLogicalPortMappingTable[static_cast<size_t>(xi_internalId)];
}
