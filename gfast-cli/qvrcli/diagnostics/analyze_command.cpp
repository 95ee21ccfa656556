#include "qvrcli/diagnostics/analyze_command.h"

#include <qvr.h>

#include <cerrno>
#include <cstring>
#include <iterator>

#include "qvrcli/diagnostics/crash_dump.h"
#include "qvrcli/diagnostics/device_info_text.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/labelled_lines.h"
#include "qvrcli/text/text_files.h"

namespace gfast::console {

namespace {

constexpr const char* kCpuNames[] = {"FRAMER", "FDU", "CP"};

const char* cpuName(CLI_CPU_TYPE_E cpu) {
  return kCpuNames[cpu < std::size(kCpuNames) ? cpu : CPU_CP];
}

void printLeadingAssert(const LabelledLines& lines, const CLI_leadingAssert_t& assertion) {
  lines.heading("\n<Leading Assert>\n");
  lines.printAs("Assert Id", "{:08x} ({})", assertion.assertId, static_cast<int>(assertion.assertId));
  lines.printAs("Symbol Counter", "{:08x}", assertion.symbolCounter);
  lines.printAs("TBM Symbol", "{:08x}", assertion.tbmSymbol);
  lines.printAs("TBM Phase", "{:08x}", assertion.tbmPhase);
  lines.printAs("TBM Sample", "{:08x}", assertion.tbmSample);
  lines.print("Device Id", assertion.deviceId);
  lines.print("Line Id", assertion.lineId);
  lines.print("CPU", cpuName(assertion.cpuType));
  lines.printAs("Count", "{}\n", assertion.count);
}

void printAnalysis(cli_def* cli, const DEV_INF_S* devices, const CLI_leadingAssert_t& assertion) {
  for (QVR_deviceId_t device = 0; device < QVR_K_MAX_DEVICES; device++) {
    printDeviceInfo(cli, device, devices[device].bytes);
  }
  printLeadingAssert(LabelledLines(cli, kReportLabelWidth), assertion);
}

// False, with errno saying why, when not everything could be written.
bool writeAnalysis(const char* path, const DEV_INF_S* devices, const CLI_leadingAssert_t& assertion) {
  OutputFile file(path);
  if (!file.isOpen()) {
    return false;
  }
  for (QVR_deviceId_t device = 0; device < QVR_K_MAX_DEVICES; device++) {
    printDeviceInfoToFile(file.get(), device, devices[device].bytes);
  }
  printLeadingAssert(LabelledLines(file.get(), kReportLabelWidth), assertion);
  return file.finish();
}

int CLI_analyzeCrashDump(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const int addressesPerLine =
      words.number(0, 1, 4, "number-of-addresses-per-line must be between 1 and 4", 0);
  const char* const filename = words.text(1, "");
  const char* const report = words.text(2, nullptr);
  if (words.refused()) {
    return CLI_OK;
  }
  DEV_INF_S devices[QVR_K_MAX_DEVICES] = {};
  if (!loadDeviceInfoFromFile(filename, devices, addressesPerLine)) {
    cli_print(cli, "Failed loading device information from file %s", filename);
    return CLI_OK;
  }
  CLI_leadingAssert_t assertion;
  findLeadingAssert(devices, &assertion);
  if (report == nullptr) {
    printAnalysis(cli, devices, assertion);
  } else if (!writeAnalysis(report, devices, assertion)) {
    cli_print(cli, "Failed writing file %s (%s)", report, std::strerror(errno));
  }
  return CLI_OK;
}

constexpr Command kAnalyzeCommands[] = {
    exec("analyze crashdump", "Analyze crash dump file", CLI_analyzeCrashDump, between<1, 3>, writesFile(2),
         "analyze crashdump <number-of-addresses-per-line> <crashdump-filename> [<output-file>]"),
};

}  // namespace

std::span<const Command> analyzeCommands() {
  return kAnalyzeCommands;
}

}  // namespace gfast::console
