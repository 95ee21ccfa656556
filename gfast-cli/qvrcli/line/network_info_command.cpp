#include "qvrcli/line/network_info_command.h"

#include <fmt/format.h>
#include <qvr.h>

#include <string>

#include "qvrcli/line/line_status_commands.h"
#include "qvrcli/text/link_states.h"

namespace gfast::console {

namespace {

static_assert(QVR_K_MAX_LINES_PER_DEVICE == 1);
constexpr int kUnknownState = -1;
constexpr double kKbitInMbit = 1000.0;
constexpr double kTooWide = 9999.5;  // Mbit/s; the columns hold four digits

// One direction of a line, Mbit/s.
struct DirectionRates {
  double phy = 0;
  double etr = 0;
  double averageEtr = 0;
  double net = 0;
  double eftr = 0;
};

struct LineRates {
  DirectionRates ds;
  DirectionRates us;
};

// Framing values that make no sense give rates that no line can have, or none: they are shown as 0.
double mbit(double kbit) {
  const double rate = kbit / kKbitInMbit;
  return rate >= 0 && rate < kTooWide ? rate : 0;
}

// Each end knows the error-free throughput of the direction that it receives; that of the other direction is
// read from the far end.
void takeCounters(QVR_lineId_t line, DirectionRates& sent, DirectionRates& received) {
  GFAST_DERIVED_COUNTERS_S near{};
  if (QVR_STATUS_ERROR(QVR_readGfastDerivedCounters(line, &near))) {
    return;
  }
  sent.averageEtr = mbit(near.TxEtrAvg);
  received.averageEtr = mbit(near.RxEtrAvg);
  sent.net = mbit(near.TxNDR);
  received.net = mbit(near.RxNDR);
  received.eftr = mbit(near.EFTR);
  GFAST_DERIVED_COUNTERS_S far{};
  QVR_readGfastDerivedCountersFE(line, &far);  // stays zero when it fails
  sent.eftr = mbit(far.EFTR);
}

// All rates of a line that is not up are zero.
LineRates ratesOf(QVR_lineId_t line, bool isNetworkSide) {
  LineRates rates;
  float etrDs = 0;
  float etrUs = 0;
  float phyDs = 0;
  float phyUs = 0;
  if (QVR_STATUS_ERROR(QVR_calcETRsForLine(line, &etrDs, &etrUs, &phyDs, &phyUs))) {
    return rates;
  }
  rates.ds.etr = mbit(etrDs);
  rates.us.etr = mbit(etrUs);
  rates.ds.phy = mbit(phyDs);
  rates.us.phy = mbit(phyUs);
  if (isNetworkSide) {
    takeCounters(line, rates.ds, rates.us);
  } else {
    takeCounters(line, rates.us, rates.ds);
  }
  return rates;
}

void printRow(cli_def* cli, QVR_lineId_t line) {
  int state = kUnknownState;
  LineRates rates;
  QVR_deviceInfo_t info;
  const QVR_deviceId_t device = QVR_deviceIdforLine(line);
  if (device != QVR_K_DEVICE_NULL && QVR_STATUS_OK(QVR_getDeviceInfo(device, &info))) {
    state = static_cast<int>(info.lineState[kTheLine]);
    rates = state == LS_SHOWTIME ? ratesOf(line, QVR_isNetworkSideLine(line) != FALSE) : rates;
  }
  const DirectionRates& ds = rates.ds;
  const DirectionRates& us = rates.us;
  const std::string row = fmt::format(
      "|  {:02d}  |  {}  |\t{:4.0f}    |  {:4.0f}    |  {:4.0f}  |  {:4.0f}  |  {:4.0f}  |"
      "    {:5.1f} |   {:5.1f}  |     {:4.1f}  |   {:4.1f}   |   {:4.1f}   |",
      line, linkStateString(state), ds.phy, us.phy, ds.etr + us.etr, ds.etr, us.etr, ds.averageEtr,
      us.averageEtr, ds.net + us.net, ds.eftr, us.eftr);
  cli_print(cli, "%s", row.c_str());
}

// One row a line, rates in Mbit/s. A rate that cannot be read is zero.
int CLI_showNetworkInfo(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_print(cli, "%s", "");
  cli_print(
      cli,
      "| Link |     Link          |   DS       |   US     | Total  |   DS   |   US   |  DS AVG  |  US AVG  "
      "|   Total   | DS Data  | US Data  |");
  cli_print(
      cli,
      "|  ID  |     State         | Phy Rate   | Phy Rate |  ETR   |   ETR  |   ETR  |   ETR    |   ETR    "
      "| Data Rate |   EFTR   |   EFTR   |");
  cli_print(
      cli,
      "|------+-------------------+------------+----------+--------+--------+--------+----------+----------"
      "+-----------+----------+----------|");
  for (QVR_lineId_t line = 0; line < numberOfLinesFound(); line++) {
    printRow(cli, line);
  }
  return CLI_OK;
}

constexpr Command kNetworkInfoCommands[] = {
    exec("show network-info", "Show network information", CLI_showNetworkInfo, exactly<0>, kReads,
         "show network-info"),
};

}  // namespace

std::span<const Command> networkInfoCommands() {
  return kNetworkInfoCommands;
}

}  // namespace gfast::console
