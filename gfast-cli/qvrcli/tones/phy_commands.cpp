#include "qvrcli/tones/phy_commands.h"

#include <fmt/format.h>
#include <qvr.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "qvrcli/text/arguments.h"
#include "qvrcli/text/line_argument.h"
#include "qvrcli/text/line_buffer.h"
#include "qvrcli/text/table_output.h"

namespace gfast::console {

namespace {

// The tables last shown, as the end that was asked for has them.
QVR_BLT_t sentBits;
QVR_BLT_t receivedBits;
QVR_SNRTBL_t snr;
QVR_FEQ_t feq;
QVR_FEQ_t calibratedFeq;

enum class Side { kNear, kFar };

// False after a message.
bool parseSide(cli_def* cli, char* argv[], int argc, Side* side) {
  if (argc > 1 && isKeyword(argv[1], "fe")) {
    *side = Side::kFar;
  } else if (argc > 1 && !isKeyword(argv[1], "ne")) {
    cli_print(cli, "parameter must be ne or fe");
    return false;
  }
  return true;
}

// Blanks behind a label up to the common column of the values.
const char* fillBehind(const char* label) {
  constexpr size_t width = 20;
  return filler(' ', static_cast<uint8_t>(width - std::min(width, std::strlen(label))));
}

// The lowest subcarrier of a set.
uint32_t lowestOf(const QVR_medleyset_t& set) {
  uint32_t lowest = QVR_MAX_NUMBER_OF_TONES;
  for (uint32_t i = 0; i < set.numBands; i++) {
    lowest = std::min<uint32_t>(lowest, set.bands[i].firstSubCarrier);
  }
  return lowest;
}

// The SNR table of the end, and the subcarrier of its first entry: the far end receives what this end sends.
QVR_retval_t readSnr(QVR_lineId_t line, Side side, const QVR_linePhyParams_t& tones, uint32_t* firstTone) {
  *firstTone = tones.firstTone;
  if (side == Side::kNear) {
    return QVR_readSNRTable(line, snr);
  }
  QVR_medleyset_t sent;
  const QVR_retval_t status = QVR_getMedleySet(line, TRUE, &sent);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  *firstTone = lowestOf(sent);
  return QVR_readFarEndSNRTable(line, snr);
}

// What `show phy info` shows of a line.
struct PhyInfo {
  QVR_linePhyParams_t tones{};
  QVR_AFE_PARAMS_t frontEnd{};
  uint32_t firstSnrTone = 0;  // the subcarrier of the SNR table's first entry
};

void clearTables() {
  std::fill(std::begin(sentBits), std::end(sentBits), 0);
  std::fill(std::begin(receivedBits), std::end(receivedBits), 0);
  std::fill(std::begin(snr), std::end(snr), 0.0F);
  std::fill(std::begin(feq), std::end(feq), 0.0);
  std::fill(std::begin(calibratedFeq), std::end(calibratedFeq), 0.0);
}

// False after a message.
bool readTable(cli_def* cli, const char* name, QVR_retval_t status) {
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed to read %s (error=%1d)", name, static_cast<int>(status));
    return false;
  }
  return true;
}

// What the far end sends is what this end receives, and the other way round.
bool readPhyInfo(cli_def* cli, QVR_lineId_t line, Side side, PhyInfo& info) {
  const bool near = side == Side::kNear;
  const auto readSent = near ? QVR_readTxBitLoadingTable : QVR_readRxBitLoadingTable;
  const auto readReceived = near ? QVR_readRxBitLoadingTable : QVR_readTxBitLoadingTable;
  const auto readSignal = near ? QVR_readRxSignal : QVR_readFarEndRxSignal;
  clearTables();
  return readTable(cli, "PHY params", QVR_getLinePhyParams(line, &info.tones)) &&
         readTable(cli, "TX bit-loading table", readSent(line, sentBits)) &&
         readTable(cli, "RX bit-loading table", readReceived(line, receivedBits)) &&
         readTable(cli, "SNR table", readSnr(line, side, info.tones, &info.firstSnrTone)) &&
         readTable(cli, "FEQ table", readSignal(line, feq, calibratedFeq, &info.frontEnd));
}

// A subcarrier's value in a table whose first entry is that of another one; 0 where there is none.
template <typename Value>
double valueAt(const Value (&table)[QVR_MAX_NUMBER_OF_TONES], uint32_t first, uint32_t subcarrier) {
  const double value = subcarrier < first ? 0.0 : static_cast<double>(table[subcarrier - first]);
  return std::isfinite(value) ? value : 0.0;
}

void printPhyInfo(const TableOutput& out, const PhyInfo& info) {
  out.row("# PHY Params:");
  out.row("# firstTone\tnumProcessedTones");
  out.row("{}\t\t{}", info.tones.firstTone, info.tones.numProcessedTones);
  out.row("# AFE Params:");
  out.row("# rxGain\taceOnOff");
  out.row("{:.5f}\t\t{}", info.frontEnd.rxGain, info.frontEnd.aceOnOff);
  out.row("# PHY Info:");
  out.row("# Frequency\tBITS(tx) BITS(rx) SNR\t\tFEQ(calib)\tFEQ");
  for (uint32_t subcarrier = 0; subcarrier < QVR_MAX_NUMBER_OF_TONES; subcarrier++) {
    out.row("{:09.5f}\t{}\t{}\t{:.5f}\t{:.5f}\t{:.5f}", subcarrier * QVR_K_SUBCARRIER_SPACING_MHZ,
            sentBits[subcarrier], receivedBits[subcarrier], valueAt(snr, info.firstSnrTone, subcarrier),
            valueAt(calibratedFeq, info.tones.firstTone, subcarrier),
            valueAt(feq, info.tones.firstTone, subcarrier));
  }
}

}  // namespace

int CLI_showPhyParams(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  int lineId = 0;
  if (!takeLine(cli, argv, argc, &lineId)) {
    return CLI_OK;
  }
  if (QVR_isLineUp(lineId) != TRUE) {
    cli_print(cli, "Line %1d is in not SHOWTIME",
              lineId);  // in these words: operators' scripts look for them
    return CLI_OK;
  }
  QVR_linePhyParams_t tones{};
  if (readTable(cli, "PHY params", QVR_getLinePhyParams(lineId, &tones))) {
    cli_print(cli, "\nfirstTone %s %d", fillBehind("firstTone"), static_cast<int>(tones.firstTone));
    cli_print(cli, "numProcessedTones %s %d", fillBehind("numProcessedTones"),
              static_cast<int>(tones.numProcessedTones));
  }
  return CLI_OK;
}

int CLI_showAfeParams(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  int lineId = 0;
  Side side = Side::kNear;
  if (!parseSide(cli, argv, argc, &side) || !takeLine(cli, argv, argc, &lineId)) {
    return CLI_OK;
  }
  const auto read = side == Side::kNear ? QVR_getAfeParams : QVR_getFarEndAfeParams;
  const bool allLines = argc == 0;
  for (int line = allLines ? 0 : lineId; line <= (allLines ? QVR_K_LINE_ID_LAST : lineId); line++) {
    QVR_AFE_PARAMS_t frontEnd{};
    const auto aceOnOff = [&frontEnd] { return static_cast<int>(frontEnd.aceOnOff); };
    if (QVR_STATUS_ERROR(read(line, &frontEnd))) {
      cli_print(cli, "Failed getting AFE params for line %d", line);
    } else if (allLines) {
      cli_print(cli, "Line[%02d] %s %d", line, fmt::format("{:.5f}", frontEnd.rxGain).c_str(), aceOnOff());
    } else {
      cli_print(cli, "\nRxGain %s %s", fillBehind("RxGain"), fmt::format("{:.5f}", frontEnd.rxGain).c_str());
      cli_print(cli, "aceOnOff %s %d", fillBehind("aceOnOff"), aceOnOff());
    }
  }
  return CLI_OK;
}

int CLI_showPhyInfo(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  int lineId = 0;
  Side side = Side::kNear;
  if (!takeLine(cli, argv, argc, &lineId) || !parseSide(cli, argv, argc, &side)) {
    return CLI_OK;
  }
  if (QVR_isLineUp(lineId) != TRUE) {
    cli_print(cli, "Line %1d is not in SHOWTIME", lineId);
    return CLI_OK;
  }
  TableOutput out(cli);
  PhyInfo info;
  if (out.open(argc > 2 ? argv[2] : nullptr) && readPhyInfo(cli, lineId, side, info)) {
    printPhyInfo(out, info);
    out.finish();
  }
  return CLI_OK;
}

}  // namespace gfast::console
