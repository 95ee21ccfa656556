#include "qvrcli/diagnostics/device_info_text.h"

#include "chip/device_information.h"
#include "qvrcli/text/report_sink.h"
#include "std/byte_order.h"

namespace gfast::console {

namespace {

constexpr size_t kGhsTimes = 4;

// A field that exists several times: once a line, a GHS slot, a parameter.
void indexedWord(const ReportSink& out, const char* nameFormat, int index, const uint8_t* word) {
  char name[40];
  std::snprintf(name, sizeof name, nameFormat, index);
  out.field(name, "%08x", load_be32(word));
}

void printAssertRecord(const ReportSink& out, const uint8_t* info, const uint8_t* extension) {
  out.field("numberOfAssertions", "%08x", load_be32(info + CPU_ASSERT_INFO_NUMBER));
  out.field("symbolCounter", "%08x", load_be32(extension + CPU_ASSERT_EXTENSION_SYMBOL_COUNTER));
  out.field("tbmSymbol", "%08x", load_be32(extension + CPU_ASSERT_EXTENSION_TBM_SYMBOL));
  out.field("tbmPhase", "%08x", load_be32(extension + CPU_ASSERT_EXTENSION_TBM_PHASE));
  out.field("tbmSample", "%08x", load_be32(extension + CPU_ASSERT_EXTENSION_TBM_SAMPLE));
  const uint32_t assertId = load_be32(info + CPU_ASSERT_INFO_ASSERT_ID);
  out.field("assertId", "%08x (%d)", assertId, static_cast<int>(assertId));
  out.field("numParams", "%08x", load_be32(info + CPU_ASSERT_INFO_NUM_PARAMS));
  for (size_t i = 0; i < CPU_ASSERT_MAX_PARAMS; i++) {
    indexedWord(out, "assertParam%1d", static_cast<int>(i), info + CPU_ASSERT_INFO_PARAMS + 4 * i);
  }
}

// The word of a field that has one for each line.
const uint8_t* wordOfLine(const uint8_t* image, size_t field, int line) {
  return image + field + sizeof(uint32_t) * static_cast<size_t>(line);
}

void printAsserts(const ReportSink& out, QVR_deviceId_t deviceId, const uint8_t* image) {
  char heading[64];
  for (int line = 0; line < QVR_K_MAX_LINES_PER_DEVICE; line++) {
    const auto index = static_cast<size_t>(line);
    const uint8_t* info = image + DEV_INF_LINK_ASSERT_INFO + index * 2 * CPU_ASSERT_INFO_SIZE;
    const uint8_t* extension = image + DEV_INF_LINK_ASSERT_EXTENSION + index * 2 * CPU_ASSERT_EXTENSION_SIZE;
    std::snprintf(heading, sizeof heading, "\n<framerAssertInfo [%1d.%1d]>\n", deviceId, line);
    out.heading(heading);
    printAssertRecord(out, info, extension);
    std::snprintf(heading, sizeof heading, "\n<fduAssertInfo [%1d.%1d]>\n", deviceId, line);
    out.heading(heading);
    printAssertRecord(out, info + CPU_ASSERT_INFO_SIZE, extension + CPU_ASSERT_EXTENSION_SIZE);
  }
  std::snprintf(heading, sizeof heading, "\n<cpAssertInfo[%1d]>\n", deviceId);
  out.heading(heading);
  printAssertRecord(out, image + DEV_INF_CP_ASSERT_INFO, image + DEV_INF_CP_ASSERT_EXTENSION);
}

void printImage(const ReportSink& out, QVR_deviceId_t deviceId, const uint8_t* image) {
  out.field("deviceId", "%d", deviceId);
  out.field("devinfVersion", "%08x", load_be32(image + DEV_INF_VERSION));
  out.field("firmwareVersion", "%08x", load_be32(image + DEV_INF_FIRMWARE_VERSION));
  for (int line = 0; line < QVR_K_MAX_LINES_PER_DEVICE; line++) {
    indexedWord(out, "linkStartupTime[%1d]", line, wordOfLine(image, DEV_INF_LINK_STARTUP_TIME, line));
  }
  for (size_t slot = 0; slot < kGhsTimes; slot++) {
    indexedWord(out, "link%1dGhsTime", static_cast<int>(slot), image + DEV_INF_GHS_TIMES + 4 * slot);
  }
  for (int line = 0; line < QVR_K_MAX_LINES_PER_DEVICE; line++) {
    char name[40];
    std::snprintf(name, sizeof name, "linkInitlastsignal[%1d]", line);
    const uint8_t* signals = wordOfLine(image, DEV_INF_LAST_SIGNAL, line);
    out.field(name, "%04x %04x", load_be16(signals), load_be16(signals + 2));
    indexedWord(out, "linkInitStatusFailureCause[%1d]", line,
                wordOfLine(image, DEV_INF_INIT_FAILURE_CAUSE, line));
  }
  out.field("temperature", "%08x", load_be32(image + DEV_INF_TEMPERATURE));
  // Country code, vendor code, revision: 16, 32 and 16 bits, each at the start of its own word.
  const uint8_t* vendor = image + DEV_INF_VENDOR_ID;
  out.field("vendor id", "%04x %08x %04x", load_be16(vendor), load_be32(vendor + 4), load_be16(vendor + 8));
  printAsserts(out, deviceId, image);
}

}  // namespace

void printDeviceInfo(cli_def* cli, QVR_deviceId_t deviceId, const uint8_t* image) {
  printImage(ReportSink(cli), deviceId, image);
  cli_print(cli, " ");
}

void printDeviceInfoToFile(FILE* file, QVR_deviceId_t deviceId, const uint8_t* image) {
  printImage(ReportSink(file), deviceId, image);
}

}  // namespace gfast::console
