#include "qvrcli/tones/phy_commands.h"

#include <fmt/format.h>
#include <qvr.h>

#include <algorithm>
#include <cmath>

#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/labelled_lines.h"
#include "qvrcli/text/table_output.h"

namespace gfast::console {

namespace {

constexpr uint8_t kLabelWidth = 20;

// The tables of the last command; static, because they are large.
QVR_BLT_t sentBits;
QVR_BLT_t receivedBits;
QVR_SNRTBL_t snrTable;
QVR_FEQ_t feq;
QVR_FEQ_t calibratedFeq;

constexpr Refusal kNoSuchEnd = "parameter must be ne or fe";

// The lowest subcarrier of a set.
uint32_t lowestOf(const QVR_medleyset_t& set) {
  uint32_t lowest = QVR_MAX_NUMBER_OF_TONES;
  for (uint32_t i = 0; i < set.numBands; i++) {
    lowest = std::min<uint32_t>(lowest, set.bands[i].firstSubCarrier);
  }
  return lowest;
}

// The SNR table of the end, and the subcarrier of its first entry: the far end receives what this end sends.
QVR_retval_t readSnr(QVR_lineId_t line, End end, const QVR_linePhyParams_t& tones, uint32_t* firstTone) {
  *firstTone = tones.firstTone;
  if (end == End::kNear) {
    return QVR_readSNRTable(line, snrTable);
  }
  QVR_medleyset_t sent;
  const QVR_retval_t status = QVR_getMedleySet(line, TRUE, &sent);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  *firstTone = lowestOf(sent);
  return QVR_readFarEndSNRTable(line, snrTable);
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
  std::fill(std::begin(snrTable), std::end(snrTable), 0.0F);
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
bool readPhyInfo(cli_def* cli, QVR_lineId_t line, End end, PhyInfo& info) {
  const bool near = end == End::kNear;
  const auto readSent = near ? QVR_readTxBitLoadingTable : QVR_readRxBitLoadingTable;
  const auto readReceived = near ? QVR_readRxBitLoadingTable : QVR_readTxBitLoadingTable;
  const auto readSignal = near ? QVR_readRxSignal : QVR_readFarEndRxSignal;
  clearTables();
  return readTable(cli, "PHY params", QVR_getLinePhyParams(line, &info.tones)) &&
         readTable(cli, "TX bit-loading table", readSent(line, sentBits)) &&
         readTable(cli, "RX bit-loading table", readReceived(line, receivedBits)) &&
         readTable(cli, "SNR table", readSnr(line, end, info.tones, &info.firstSnrTone)) &&
         readTable(cli, "FEQ table", readSignal(line, feq, calibratedFeq, &info.frontEnd));
}

// The value of a subcarrier in a table whose first entry is that of subcarrier `first`; 0 below it.
template <typename Value>
double valueAt(const Value (&table)[QVR_MAX_NUMBER_OF_TONES], uint32_t first, uint32_t subcarrier) {
  const double value = subcarrier < first ? 0.0 : static_cast<double>(table[subcarrier - first]);
  return std::isfinite(value) ? value : 0.0;
}

void printPhyInfo(TableOutput& out, const PhyInfo& info) {
  out.row(FMT_COMPILE("# PHY Params:"));
  out.row(FMT_COMPILE("# firstTone\tnumProcessedTones"));
  out.row(FMT_COMPILE("{}\t\t{}"), info.tones.firstTone, info.tones.numProcessedTones);
  out.row(FMT_COMPILE("# AFE Params:"));
  out.row(FMT_COMPILE("# rxGain\taceOnOff"));
  out.row(FMT_COMPILE("{:.5f}\t\t{}"), info.frontEnd.rxGain, info.frontEnd.aceOnOff);
  out.row(FMT_COMPILE("# PHY Info:"));
  out.row(FMT_COMPILE("# Frequency\tBITS(tx) BITS(rx) SNR\t\tFEQ(calib)\tFEQ"));
  for (uint32_t subcarrier = 0; subcarrier < QVR_MAX_NUMBER_OF_TONES; subcarrier++) {
    out.row(FMT_COMPILE("{:09.5f}\t{}\t{}\t{:.5f}\t{:.5f}\t{:.5f}"),
            subcarrier * QVR_K_SUBCARRIER_SPACING_MHZ, sentBits[subcarrier], receivedBits[subcarrier],
            valueAt(snrTable, info.firstSnrTone, subcarrier),
            valueAt(calibratedFeq, info.tones.firstTone, subcarrier),
            valueAt(feq, info.tones.firstTone, subcarrier));
  }
}

int CLI_showPhyParams(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  if (QVR_isLineUp(line) != TRUE) {
    cli_print(cli, "Line %1d is in not SHOWTIME", line);  // in this word order: scripts look for it
    return CLI_OK;
  }
  QVR_linePhyParams_t tones{};
  if (readTable(cli, "PHY params", QVR_getLinePhyParams(line, &tones))) {
    const LabelledLines lines(cli, kLabelWidth);
    lines.heading("");
    lines.print("firstTone", static_cast<int>(tones.firstTone));
    lines.print("numProcessedTones", static_cast<int>(tones.numProcessedTones));
  }
  return CLI_OK;
}

int CLI_showAfeParams(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const End end = words.end(1, kNoSuchEnd);
  const QVR_lineId_t first = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  const auto read = end == End::kNear ? QVR_getAfeParams : QVR_getFarEndAfeParams;
  const bool allLines = argc == 0;
  for (QVR_lineId_t line = first; line <= (allLines ? QVR_K_LINE_ID_LAST : first); line++) {
    QVR_AFE_PARAMS_t frontEnd{};
    const auto aceOnOff = [&frontEnd] { return static_cast<int>(frontEnd.aceOnOff); };
    if (QVR_STATUS_ERROR(read(line, &frontEnd))) {
      cli_print(cli, "Failed getting AFE params for line %d", line);
    } else if (allLines) {
      cli_print(cli, "Line[%02d] %s %d", line, fmt::format("{:.5f}", frontEnd.rxGain).c_str(), aceOnOff());
    } else {
      const LabelledLines lines(cli, kLabelWidth);
      lines.heading("");
      lines.printAs("RxGain", "{:.5f}", frontEnd.rxGain);
      lines.print("aceOnOff", aceOnOff());
    }
  }
  return CLI_OK;
}

int CLI_showPhyInfo(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  const End end = words.end(1, kNoSuchEnd);
  if (words.refused()) {
    return CLI_OK;
  }
  if (QVR_isLineUp(line) != TRUE) {
    cli_print(cli, "Line %1d is not in SHOWTIME", line);
    return CLI_OK;
  }
  TableOutput out(cli);
  PhyInfo info;
  if (out.open(words.text(2, nullptr)) && readPhyInfo(cli, line, end, info)) {
    printPhyInfo(out, info);
    out.finish();
  }
  return CLI_OK;
}

constexpr Command kPhyCommands[] = {
    exec("show afe-params", "Show AFE parameters for a line or all lines", CLI_showAfeParams, between<0, 2>,
         kReads, "show afe-params [<lineId>] [ne | fe] : { <ALL> ne  }"),
    exec("show phy info", "Show PHY-level information for line", CLI_showPhyInfo, between<0, 3>,
         writesFile(2), "show phy info [<line-id>] [(ne | fe)] [<filename>] : { 0, us <NONE> }"),
    exec("show phy params", "Show PHY parameters for line", CLI_showPhyParams, between<0, 1>, kReads,
         "show phy params [<line-id>] : { 0 }"),
};

}  // namespace

std::span<const Command> phyCommands() {
  return kPhyCommands;
}

}  // namespace gfast::console
