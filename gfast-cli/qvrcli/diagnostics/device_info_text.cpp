#include "qvrcli/diagnostics/device_info_text.h"

#include <fmt/format.h>

#include <string_view>

#include "chip/device_information.h"
#include "qvrcli/text/labelled_lines.h"
#include "std/byte_order.h"

namespace gfast::console {

namespace {

constexpr size_t kGhsTimes = 4;

void printWord(const LabelledLines& lines, std::string_view name, const uint8_t* word) {
  lines.printAs(name, "{:08x}", load_be32(word));
}

void printAssertRecord(const LabelledLines& lines, const uint8_t* info, const uint8_t* extension) {
  printWord(lines, "numberOfAssertions", info + CPU_ASSERT_INFO_NUMBER);
  printWord(lines, "symbolCounter", extension + CPU_ASSERT_EXTENSION_SYMBOL_COUNTER);
  printWord(lines, "tbmSymbol", extension + CPU_ASSERT_EXTENSION_TBM_SYMBOL);
  printWord(lines, "tbmPhase", extension + CPU_ASSERT_EXTENSION_TBM_PHASE);
  printWord(lines, "tbmSample", extension + CPU_ASSERT_EXTENSION_TBM_SAMPLE);
  const uint32_t assertId = load_be32(info + CPU_ASSERT_INFO_ASSERT_ID);
  lines.printAs("assertId", "{:08x} ({})", assertId, static_cast<int>(assertId));
  printWord(lines, "numParams", info + CPU_ASSERT_INFO_NUM_PARAMS);
  for (size_t i = 0; i < CPU_ASSERT_MAX_PARAMS; i++) {
    printWord(lines, fmt::format("assertParam{}", i), info + CPU_ASSERT_INFO_PARAMS + 4 * i);
  }
}

// The word of a field that has one for each line.
const uint8_t* wordOfLine(const uint8_t* image, size_t field, int line) {
  return image + field + sizeof(uint32_t) * static_cast<size_t>(line);
}

void printAsserts(const LabelledLines& lines, QVR_deviceId_t deviceId, const uint8_t* image) {
  for (int line = 0; line < QVR_K_MAX_LINES_PER_DEVICE; line++) {
    const auto index = static_cast<size_t>(line);
    const uint8_t* info = image + DEV_INF_LINK_ASSERT_INFO + index * 2 * CPU_ASSERT_INFO_SIZE;
    const uint8_t* extension = image + DEV_INF_LINK_ASSERT_EXTENSION + index * 2 * CPU_ASSERT_EXTENSION_SIZE;
    lines.heading(fmt::format("\n<framerAssertInfo [{}.{}]>\n", deviceId, line).c_str());
    printAssertRecord(lines, info, extension);
    lines.heading(fmt::format("\n<fduAssertInfo [{}.{}]>\n", deviceId, line).c_str());
    printAssertRecord(lines, info + CPU_ASSERT_INFO_SIZE, extension + CPU_ASSERT_EXTENSION_SIZE);
  }
  lines.heading(fmt::format("\n<cpAssertInfo[{}]>\n", deviceId).c_str());
  printAssertRecord(lines, image + DEV_INF_CP_ASSERT_INFO, image + DEV_INF_CP_ASSERT_EXTENSION);
}

void printImage(const LabelledLines& lines, QVR_deviceId_t deviceId, const uint8_t* image) {
  lines.print("deviceId", deviceId);
  printWord(lines, "devinfVersion", image + DEV_INF_VERSION);
  printWord(lines, "firmwareVersion", image + DEV_INF_FIRMWARE_VERSION);
  for (int line = 0; line < QVR_K_MAX_LINES_PER_DEVICE; line++) {
    printWord(lines, fmt::format("linkStartupTime[{}]", line),
              wordOfLine(image, DEV_INF_LINK_STARTUP_TIME, line));
  }
  for (size_t slot = 0; slot < kGhsTimes; slot++) {
    printWord(lines, fmt::format("link{}GhsTime", slot), image + DEV_INF_GHS_TIMES + 4 * slot);
  }
  for (int line = 0; line < QVR_K_MAX_LINES_PER_DEVICE; line++) {
    const uint8_t* signals = wordOfLine(image, DEV_INF_LAST_SIGNAL, line);
    lines.printAs(fmt::format("linkInitlastsignal[{}]", line), "{:04x} {:04x}", load_be16(signals),
                  load_be16(signals + 2));
    printWord(lines, fmt::format("linkInitStatusFailureCause[{}]", line),
              wordOfLine(image, DEV_INF_INIT_FAILURE_CAUSE, line));
  }
  printWord(lines, "temperature", image + DEV_INF_TEMPERATURE);
  // Country code, vendor code, revision: 16, 32 and 16 bits, each at the start of its own word.
  const uint8_t* vendor = image + DEV_INF_VENDOR_ID;
  lines.printAs("vendor id", "{:04x} {:08x} {:04x}", load_be16(vendor), load_be32(vendor + 4),
                load_be16(vendor + 8));
  printAsserts(lines, deviceId, image);
}

}  // namespace

void printDeviceInfo(cli_def* cli, QVR_deviceId_t deviceId, const uint8_t* image) {
  printImage(LabelledLines(cli, kReportLabelWidth), deviceId, image);
  cli_print(cli, " ");
}

void printDeviceInfoToFile(FILE* file, QVR_deviceId_t deviceId, const uint8_t* image) {
  printImage(LabelledLines(file, kReportLabelWidth), deviceId, image);
}

}  // namespace gfast::console
