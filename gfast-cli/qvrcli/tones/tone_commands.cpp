#include "qvrcli/tones/tone_commands.h"

#include <fmt/format.h>
#include <qvr.h>

#include <algorithm>

#include "qvrcli/text/arguments.h"
#include "qvrcli/text/line_argument.h"
#include "qvrcli/text/table_output.h"

namespace gfast::console {

namespace {

// The tables last shown.
G9972_BITSps_t bits;
G9972_BITSps_t rmcBits;
G9972_SNRps_t snr;
G9972_ALNps_t activeLineNoise;
G9972_HLOGps_t channelMagnitude;

double frequency_MHz(uint32_t subcarrier) {
  return subcarrier * QVR_K_SUBCARRIER_SPACING_MHZ;
}

// One command: where its table comes from, what stands before the direction when it cannot be read, how a row
// is printed.
template <typename Value>
struct ToneTable {
  QVR_retval_t (*upstream)(QVR_lineId_t line, Value* values);
  QVR_retval_t (*downstream)(QVR_lineId_t line, Value* values);
  const char* failure;
  void (*printRow)(const TableOutput& out, uint32_t subcarrier, Value value);
  Value (&values)[QVR_MAX_NUMBER_OF_TONES];
};

void printBits(const TableOutput& out, uint32_t subcarrier, uint8_t value) {
  out.row("{}  {:.5f}  {}", subcarrier, frequency_MHz(subcarrier), value);
}

void printSnr(const TableOutput& out, uint32_t subcarrier, uint8_t value) {
  const char* const gap = out.isFile() ? " " : "  ";
  out.row("{:.5f}  {}{}{:.1f}", frequency_MHz(subcarrier), value, gap, value / 2.0 - 32);
}

void printNoise(const TableOutput& out, uint32_t subcarrier, uint8_t value) {
  out.row("{:.5f} {} {:.1f}", frequency_MHz(subcarrier), value, -33 - value / 2.0);
}

void printMagnitude(const TableOutput& out, uint32_t subcarrier, int16_t value) {
  out.row("{:.5f} {} {:.1f}", frequency_MHz(subcarrier), value, 6 - value / 10.0);
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

struct Arguments {
  int lineId = 0;
  bool downstream = false;
  const char* filename = nullptr;  // nullptr: the session

  const char* direction() const { return downstream ? "ds" : "us"; }
};

// False after a message.
bool parse(cli_def* cli, char* argv[], int argc, Arguments& arguments) {
  if (!takeLine(cli, argv, argc, &arguments.lineId)) {
    return false;
  }
  if (argc > 1) {
    arguments.downstream = isKeyword(argv[1], "ds");
    if (!arguments.downstream && !isKeyword(argv[1], "us")) {
      cli_print(cli, "invalid parameter - must enter ds or us");
      return false;
    }
  }
  arguments.filename = argc > 2 ? argv[2] : nullptr;
  return true;
}

template <typename Value>
int showTable(cli_def* cli, char* argv[], int argc, const ToneTable<Value>& table) {
  Arguments arguments;
  TableOutput out(cli);
  if (!parse(cli, argv, argc, arguments) || !out.open(arguments.filename)) {
    return CLI_OK;
  }
  // What was there may be another line's.
  std::fill(std::begin(table.values), std::end(table.values), Value{0});
  const auto read = arguments.downstream ? table.downstream : table.upstream;
  if (QVR_STATUS_ERROR(read(arguments.lineId, table.values))) {
    cli_print(cli, "%s from %s", table.failure, arguments.direction());
    return CLI_OK;
  }
  for (uint32_t subcarrier = 0; subcarrier < QVR_MAX_NUMBER_OF_TONES; subcarrier++) {
    table.printRow(out, subcarrier, table.values[subcarrier]);
  }
  out.finish();
  return CLI_OK;
}

}  // namespace

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
  Arguments arguments;
  if (!parse(cli, argv, argc, arguments)) {
    return CLI_OK;
  }
  const auto read = arguments.downstream ? QVR_getSignalAttenuationds : QVR_getSignalAttenuationus;
  G9972_SATN_t attenuation = 0;
  if (QVR_STATUS_ERROR(read(arguments.lineId, &attenuation))) {
    cli_print(cli, "Error getting SATN from %s", arguments.direction());
    return CLI_OK;
  }
  cli_print(cli, "%s", fmt::format("{:3.1f}", attenuation / 10.0).c_str());  // the whole spectrum is one band
  return CLI_OK;
}

}  // namespace gfast::console
