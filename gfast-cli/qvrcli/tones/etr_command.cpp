#include "qvrcli/tones/etr_command.h"

#include <fmt/format.h>
#include <qvr.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "qvrcli/text/line_argument.h"
#include "qvrcli/text/line_buffer.h"

namespace gfast::console {

namespace {

// kbit/s, in the network's directions.
struct Rates {
  float etrDs = 0;
  float etrUs = 0;
  float rawDs = 0;
  float rawUs = 0;
  uint32_t netDs = 0;
  uint32_t netUs = 0;
  uint32_t averageDs = 0;
  uint32_t averageUs = 0;
};

// What the chip sends goes downstream from the network side, upstream from the subscriber's.
QVR_retval_t readRates(QVR_lineId_t line, Rates& rates) {
  QVR_retval_t status = QVR_calcETRsForLine(line, &rates.etrDs, &rates.etrUs, &rates.rawDs, &rates.rawUs);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  GFAST_DERIVED_COUNTERS_S counters{};
  status = QVR_readGfastDerivedCounters(line, &counters);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  QVR_deviceInfo_t device;
  status = QVR_getDeviceInfo(QVR_deviceIdforLine(line), &device);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  const bool network = device.isDPdevice == TRUE;
  rates.netDs = network ? counters.TxNDR : counters.RxNDR;
  rates.netUs = network ? counters.RxNDR : counters.TxNDR;
  rates.averageDs = network ? counters.TxEtrAvg : counters.RxEtrAvg;
  rates.averageUs = network ? counters.RxEtrAvg : counters.TxEtrAvg;
  return QVR_E_STATUS_OK;
}

// A label, blanks up to a common column, the value.
void printValue(cli_def* cli, const char* label, const std::string& value) {
  constexpr size_t width = 20;
  const size_t blanks = width - std::min(width, std::strlen(label));
  cli_print(cli, "%s %s %s", label, filler(' ', static_cast<uint8_t>(blanks)), value.c_str());
}

void printRate(cli_def* cli, const char* label, float rate) {
  // A chip whose framing divides by nothing has no such rate.
  printValue(cli, label, std::isfinite(rate) ? fmt::format("{:.1f}", static_cast<double>(rate)) : "N/A");
}

void printRate(cli_def* cli, const char* label, uint32_t rate) {
  printValue(cli, label, std::to_string(rate));
}

}  // namespace

int CLI_showLineETR(cli_def* cli, const char* /*command*/, char* argv[], int /*argc*/) {
  int lineId = 0;
  if (!takeLine(cli, argv, 1, &lineId)) {
    return CLI_OK;
  }
  if (QVR_isLineUp(lineId) != TRUE) {
    cli_print(cli, "Line %1d is not in SHOWTIME", lineId);
    return CLI_OK;
  }
  Rates rates;
  const QVR_retval_t status = readRates(lineId, rates);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed getting ETR (%d)", static_cast<int>(status));
    return CLI_OK;
  }
  printRate(cli, "ETRds", rates.etrDs);
  printRate(cli, "ETRus", rates.etrUs);
  printRate(cli, "PHYRATEds", rates.rawDs);
  printRate(cli, "PHYRATEus", rates.rawUs);
  printRate(cli, "NDRds", rates.netDs);
  printRate(cli, "NDRus", rates.netUs);
  printRate(cli, "ETRAVGds", rates.averageDs);
  printRate(cli, "ETRAVGus", rates.averageUs);
  return CLI_OK;
}

}  // namespace gfast::console
