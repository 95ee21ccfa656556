#include "qvrcli/tones/tone_commands.h"

#include <fmt/format.h>
#include <qvr.h>

#include <algorithm>

#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/table_output.h"

namespace gfast::console {

namespace {

// The tables of the last commands; static, because they are large.
G9972_BITSps_t bits;
G9972_BITSps_t rmcBits;
G9972_SNRps_t snr;
G9972_ALNps_t activeLineNoise;
G9972_HLOGps_t channelMagnitude;

double frequency_MHz(uint32_t subcarrier) {
  return subcarrier * QVR_K_SUBCARRIER_SPACING_MHZ;
}

// One command: how its table is read, what is printed in front of the direction when that fails, how a row is
// printed.
template <typename Value>
struct ToneTable {
  QVR_retval_t (*upstream)(QVR_lineId_t line, Value* values);
  QVR_retval_t (*downstream)(QVR_lineId_t line, Value* values);
  const char* failure;
  void (*printRow)(TableOutput& out, uint32_t subcarrier, Value value);
  Value (&values)[QVR_MAX_NUMBER_OF_TONES];
};

void printBits(TableOutput& out, uint32_t subcarrier, uint8_t value) {
  out.row(FMT_COMPILE("{}  {:.5f}  {}"), subcarrier, frequency_MHz(subcarrier), value);
}

void printSnr(TableOutput& out, uint32_t subcarrier, uint8_t value) {
  const char* const gap = out.goesToFile() ? " " : "  ";
  out.row(FMT_COMPILE("{:.5f}  {}{}{:.1f}"), frequency_MHz(subcarrier), value, gap, value / 2.0 - 32);
}

void printNoise(TableOutput& out, uint32_t subcarrier, uint8_t value) {
  out.row(FMT_COMPILE("{:.5f} {} {:.1f}"), frequency_MHz(subcarrier), value, -33 - value / 2.0);
}

void printMagnitude(TableOutput& out, uint32_t subcarrier, int16_t value) {
  out.row(FMT_COMPILE("{:.5f} {} {:.1f}"), frequency_MHz(subcarrier), value, 6 - value / 10.0);
}

constexpr ToneTable<uint8_t> kBits = {QVR_getLineStatusBITSpsus, QVR_getLineStatusBITSpsds,
                                      "Error getting bit-loading table (BITSps)", printBits, bits};
constexpr ToneTable<uint8_t> kRmcBits = {QVR_getLineStatusBITSRMCpsus, QVR_getLineStatusBITSRMCpsds,
                                         "Error getting bit-loading table (BITSRMCps)", printBits, rmcBits};
constexpr ToneTable<uint8_t> kSnr = {QVR_getLineStatusSNRpsus, QVR_getLineStatusSNRpsds,
                                     "Error getting SNR table (SNRps)", printSnr, snr};
constexpr ToneTable<uint8_t> kNoise = {QVR_getLineStatusALNpsus, QVR_getLineStatusALNpsds,
                                       "Error getting ALNps table", printNoise, activeLineNoise};
constexpr ToneTable<int16_t> kMagnitude = {QVR_getLineStatusHLOGpsus, QVR_getLineStatusHLOGpsds,
                                           "Error getting HLOGps table", printMagnitude, channelMagnitude};

constexpr Refusal kNoSuchDirection = "invalid parameter - must enter ds or us";

const char* nameOf(Direction direction) {
  return direction == Direction::kDownstream ? "ds" : "us";
}

template <typename Value>
int showTable(cli_def* cli, char* argv[], int argc, const ToneTable<Value>& table) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  const Direction direction = words.direction(1, kNoSuchDirection);
  TableOutput out(cli);
  if (words.refused() || !out.open(words.text(2, nullptr))) {
    return CLI_OK;
  }
  // It may still hold another line's values.
  std::fill(std::begin(table.values), std::end(table.values), Value{0});
  const auto read = direction == Direction::kDownstream ? table.downstream : table.upstream;
  if (QVR_STATUS_ERROR(read(line, table.values))) {
    cli_print(cli, "%s from %s", table.failure, nameOf(direction));
    return CLI_OK;
  }
  for (uint32_t subcarrier = 0; subcarrier < QVR_MAX_NUMBER_OF_TONES; subcarrier++) {
    table.printRow(out, subcarrier, table.values[subcarrier]);
  }
  out.finish();
  return CLI_OK;
}

int CLI_showBITSps(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return showTable(cli, argv, argc, kBits);
}

int CLI_showBITSRMCps(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return showTable(cli, argv, argc, kRmcBits);
}

int CLI_showSNRps(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return showTable(cli, argv, argc, kSnr);
}

int CLI_showALNps(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return showTable(cli, argv, argc, kNoise);
}

int CLI_showHLOGps(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return showTable(cli, argv, argc, kMagnitude);
}

int CLI_showSATN(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  const Direction direction = words.direction(1, kNoSuchDirection);
  if (words.refused()) {
    return CLI_OK;
  }
  const auto read =
      direction == Direction::kDownstream ? QVR_getSignalAttenuationds : QVR_getSignalAttenuationus;
  G9972_SATN_t attenuation = 0;
  if (QVR_STATUS_ERROR(read(line, &attenuation))) {
    cli_print(cli, "Error getting SATN from %s", nameOf(direction));
    return CLI_OK;
  }
  cli_print(cli, "%s", fmt::format("{:3.1f}", attenuation / 10.0).c_str());  // the whole spectrum is one band
  return CLI_OK;
}

constexpr Command kToneCommands[] = {
    exec("show BITSps", "Show bit-loading per sub-carrier", CLI_showBITSps, between<0, 3>, writesFile(2),
         "show BITSps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"),
    exec("show BITS-RMCps", "Show bit-loading per sub-carrier for RMC symbol", CLI_showBITSRMCps,
         between<0, 3>, writesFile(2),
         "show BITS-RMCps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"),
    exec("show SNRps", "Show SNR per sub-carrier", CLI_showSNRps, between<0, 3>, writesFile(2),
         "show SNRps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"),
    exec("show ALNps", "Show ALN per sub-carrier", CLI_showALNps, between<0, 3>, writesFile(2),
         "show ALNps [<lineId>] [ds | us] [<filename>]: { 0, us, <NONE> }"),
    exec("show HLOGps", "Show HLOG per sub-carrier", CLI_showHLOGps, between<0, 3>, writesFile(2),
         "show HLOGps [<lineId>] [ds | us] [<filename>]"),
    exec("show SATN", "Show Signal Attenuation (SATN)", CLI_showSATN, between<0, 2>, kReads,
         "show SATN [<lineId>] [ds | us]"),
};

}  // namespace

std::span<const Command> toneCommands() {
  return kToneCommands;
}

}  // namespace gfast::console
