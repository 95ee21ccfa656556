#include "qvrcli/counters/gfast_counter_commands.h"

#include <qvr.h>

#include "chip/counters.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/labelled_lines.h"

namespace gfast::console {

namespace {

constexpr uint8_t kCounterLabelWidth = 25;

// The blocks of the line and the end last shown.
GFAST_DERIVED_COUNTERS_S derivedCounters;
GFAST_FRAMER_INIT_COUNTERS_S framerInitCounters;
GFAST_FRAMER_RAW_COUNTERS_S framerRawCounters;
GFAST_FDU_INIT_COUNTERS_S fduInitCounters;
GFAST_FDU_RAW_COUNTERS_S fduRawCounters;

// A block that cannot be read shows zeros, and not the counters of another line.
void clearBlocks() {
  derivedCounters = {};
  framerInitCounters = {};
  framerRawCounters = {};
  fduInitCounters = {};
  fduRawCounters = {};
}

// Reads all five blocks, whatever fails; returns the result of the last read.
QVR_retval_t readBlocks(QVR_lineId_t line, End end) {
  clearBlocks();
  if (end == End::kNear) {
    QVR_readGfastDerivedCounters(line, &derivedCounters);
    QVR_readGfastFramerInitCounters(line, &framerInitCounters);
    QVR_readGfastFramerRawCounters(line, &framerRawCounters);
    QVR_readGfastFduInitCounters(line, &fduInitCounters);
    return QVR_readGfastFduRawCounters(line, &fduRawCounters);
  }
  QVR_readGfastDerivedCountersFE(line, &derivedCounters);
  QVR_readGfastFramerInitCountersFE(line, &framerInitCounters);
  QVR_readGfastFramerRawCountersFE(line, &framerRawCounters);
  QVR_readGfastFduInitCountersFE(line, &fduInitCounters);
  return QVR_readGfastFduRawCountersFE(line, &fduRawCounters);
}

void printUnsigned(cli_def* cli, const char* name, uint32_t value) {
  cli_print(cli, "%35s = %u", name, value);
}
void printSigned(cli_def* cli, const char* name, int32_t value) {
  cli_print(cli, "%35s = %d", name, value);
}

// One block: the heading with the block's chip address, the fields in chip order, a line holding one blank.
#define PRINT_UNSIGNED(field) printUnsigned(cli, #field, block.field);
#define PRINT_SIGNED(field) printSigned(cli, #field, block.field);
#define PRINT_BLOCK(heading, address, counters, FIELDS) \
  do {                                                  \
    const auto& block = (counters);                     \
    cli_print(cli, heading " (%08x)", (address));       \
    FIELDS(PRINT_UNSIGNED, PRINT_SIGNED)                \
    cli_print(cli, " ");                                \
  } while (false)

// Every chip, at the far end too, numbers its one line 0.
uint32_t blockAddress(uint32_t core, uint32_t type) {
  return VIRT_ADDR_GFAST_COUNTERS(core, 0, type);
}

void CLI_printGfastCounters(cli_def* cli) {
  PRINT_BLOCK("               FRAMER INIT COUNTERS",
              blockAddress(VIRT_GFAST_CNTR_FRAMER_CORE, VIRT_GFAST_CNTR_INIT), framerInitCounters,
              GFAST_FRAMER_INIT_COUNTERS_FIELDS);
  PRINT_BLOCK("                 FDU INIT COUNTERS",
              blockAddress(VIRT_GFAST_CNTR_FDU_CORE, VIRT_GFAST_CNTR_INIT), fduInitCounters,
              GFAST_FDU_INIT_COUNTERS_FIELDS);
  PRINT_BLOCK("                FRAMER RAW COUNTERS",
              blockAddress(VIRT_GFAST_CNTR_FRAMER_CORE, VIRT_GFAST_CNTR_RAW), framerRawCounters,
              GFAST_FRAMER_RAW_COUNTERS_FIELDS);
  PRINT_BLOCK("                   FDU RAW COUNTERS",
              blockAddress(VIRT_GFAST_CNTR_FDU_CORE, VIRT_GFAST_CNTR_RAW), fduRawCounters,
              GFAST_FDU_RAW_COUNTERS_FIELDS);
  PRINT_BLOCK("                   DERIVED COUNTERS",
              blockAddress(VIRT_GFAST_CNTR_CP_CORE, VIRT_GFAST_CNTR_DERIVED), derivedCounters,
              GFAST_DERIVED_COUNTERS_FIELDS);
}

int CLI_showGfastCounters(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0, "invalid line number");
  const End end =
      words.end(1, "parameter must be curr or prev");  // names the wrong choices; scripts look for it
  if (words.refused()) {
    return CLI_OK;
  }
  const QVR_retval_t status = readBlocks(line, end);
  if (QVR_STATUS_OK(status)) {
    CLI_printGfastCounters(cli);
  } else if (end == End::kNear) {
    cli_print(cli, "QVR_readGfastCounters failed");
  } else {
    cli_print(cli, "QVR_readGfastCounters failed (%d)", static_cast<int>(status));
  }
  return CLI_OK;
}

int CLI_showRemoteManagementCounters(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  G9701_ManagementCounters_t counters;
  const QVR_retval_t status = QVR_readFarEndFTUmanagementCounters(line, &counters);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "CLI_showRemoteManagemenCounters failed (%d)", static_cast<int>(status));
    return CLI_OK;
  }
  const LabelledLines lines(cli, kCounterLabelWidth);
#define PRINT_LABELLED(field) lines.print(#field, counters.field);
  G9701_MANAGEMENT_COUNTERS_FIELDS(PRINT_LABELLED, PRINT_LABELLED)
#undef PRINT_LABELLED
  return CLI_OK;
}

int CLI_showPMDTestParameters(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  G9701_PMDTestParameters_t parameters;
  const QVR_retval_t status = QVR_readFarEndPMDTestParameters(line, &parameters);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "CLI_showPMDTestParameters failed (%d)", static_cast<int>(status));
    return CLI_OK;
  }
  const LabelledLines lines(cli, kCounterLabelWidth);
  lines.print("SNRM", parameters.SNRM);
  lines.print("ATTNDR", parameters.ATTNDR);
  lines.print("nearEnd_ACTATP", parameters.nearEnd_ACTATP);
  lines.print("farEnd_INP_act_shine", parameters.farEnd_INP_act_shine);
  lines.print("farEnd_actualSNRM_RMC", parameters.farEnd_actualSNRM_RMC);
  lines.print("RXpower_dBm_DS", parameters.RXpower_dBm_DS);
  return CLI_OK;
}

constexpr Command kGfastCounterCommands[] = {
    exec("show gfast-counters", "Show G.fast counters for line", CLI_showGfastCounters, between<1, 2>, kReads,
         "show gfast-counters <line-id> [(ne | fe)]"),
    exec("show remote-management-counters", "Show remote FTU management counters for line",
         CLI_showRemoteManagementCounters, between<0, 1>, kReads,
         "show remote-management-counters [<line-id>] : { 0 }"),
    exec("show pmd-test-parameters", "Show PMD test parameters for line", CLI_showPMDTestParameters,
         between<0, 1>, kReads, "show pmd-test-parameters [<line-id>] : { 0 }"),
};

}  // namespace

std::span<const Command> gfastCounterCommands() {
  return kGfastCounterCommands;
}

}  // namespace gfast::console
