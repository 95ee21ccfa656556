#include "qvrcli/tones/etr_command.h"

#include <fmt/format.h>
#include <qvr.h>

#include <cmath>

#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/labelled_lines.h"

namespace gfast::console {

namespace {

constexpr uint8_t kRateLabelWidth = 20;

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

// A chip at the network side sends downstream, one at the subscriber's side upstream.
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
  const bool network = QVR_isNetworkSideLine(line) != FALSE;
  rates.netDs = network ? counters.TxNDR : counters.RxNDR;
  rates.netUs = network ? counters.RxNDR : counters.TxNDR;
  rates.averageDs = network ? counters.TxEtrAvg : counters.RxEtrAvg;
  rates.averageUs = network ? counters.RxEtrAvg : counters.TxEtrAvg;
  return QVR_E_STATUS_OK;
}

// Framing values of zero give rates that are not finite.
void printRate(const LabelledLines& lines, const char* label, float rate) {
  if (std::isfinite(rate)) {
    lines.printAs(label, "{:.1f}", rate);
  } else {
    lines.print(label, "N/A");
  }
}

void printRates(const LabelledLines& lines, const Rates& rates) {
  printRate(lines, "ETRds", rates.etrDs);
  printRate(lines, "ETRus", rates.etrUs);
  printRate(lines, "PHYRATEds", rates.rawDs);
  printRate(lines, "PHYRATEus", rates.rawUs);
  lines.print("NDRds", rates.netDs);
  lines.print("NDRus", rates.netUs);
  lines.print("ETRAVGds", rates.averageDs);
  lines.print("ETRAVGus", rates.averageUs);
}

int CLI_showLineETR(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  if (QVR_isLineUp(line) != TRUE) {
    cli_print(cli, "Line %1d is not in SHOWTIME", line);
    return CLI_OK;
  }
  Rates rates;
  const QVR_retval_t status = readRates(line, rates);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed getting ETR (%d)", static_cast<int>(status));
    return CLI_OK;
  }
  printRates(LabelledLines(cli, kRateLabelWidth), rates);
  return CLI_OK;
}

constexpr Command kEtrCommands[] = {
    exec("show ETR", "Show Expected ThRoughput (ETR) for line", CLI_showLineETR, exactly<1>, kReads,
         "show ETR <lineId>"),
};

}  // namespace

std::span<const Command> etrCommands() {
  return kEtrCommands;
}

}  // namespace gfast::console
