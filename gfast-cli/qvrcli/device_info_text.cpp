#include "qvrcli/device_info_text.h"

#include <cstdarg>
#include <cstring>

#include "qvrcli/output.h"
#include "std/byte_order.h"

namespace {

constexpr size_t kValueColumn = 40;  // a field's name and its run of blanks

// Words of one processor's assertion record and of its extension.
constexpr size_t kAssertInfoSize = 44;
constexpr size_t kNumberOfAssertions = 0;
constexpr size_t kAssertId = 4;
constexpr size_t kNumParams = 8;
constexpr size_t kAssertParams = 12;
constexpr int kMaxAssertParams = 8;
constexpr size_t kAssertExtensionSize = 16;
constexpr size_t kSymbolCounter = 0;
constexpr size_t kTbmSymbol = 4;
constexpr size_t kTbmPhase = 8;
constexpr size_t kTbmSample = 12;

constexpr size_t kGhsTimes = 4;

// Where the lines go. A session ends each line by itself; a file needs the line end written.
class Sink {
 public:
  explicit Sink(cli_def* cli) : cli_(cli) {}
  explicit Sink(FILE* file) : file_(file) {}

  void field(const char* name, const char* format, ...) const __attribute__((format(printf, 3, 4))) {
    char value[64];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(value, sizeof value, format, arguments);
    va_end(arguments);
    const size_t length = std::strlen(name);
    const char* blanks = filler(' ', static_cast<uint8_t>(length < kValueColumn ? kValueColumn - length : 0));
    if (file_ != nullptr) {
      std::fprintf(file_, "%s %s %s\n", name, blanks, value);
    } else {
      cli_print(cli_, "%s %s %s", name, blanks, value);
    }
  }

  // A heading brings its own line ends.
  void heading(const char* text) const {
    if (file_ != nullptr) {
      std::fputs(text, file_);
    } else {
      cli_print(cli_, "%s", text);
    }
  }

 private:
  cli_def* cli_ = nullptr;
  FILE* file_ = nullptr;
};

void printAssertRecord(const Sink& out, const uint8_t* info, const uint8_t* extension) {
  out.field("numberOfAssertions", "%08x", load_be32(info + kNumberOfAssertions));
  out.field("symbolCounter", "%08x", load_be32(extension + kSymbolCounter));
  out.field("tbmSymbol", "%08x", load_be32(extension + kTbmSymbol));
  out.field("tbmPhase", "%08x", load_be32(extension + kTbmPhase));
  out.field("tbmSample", "%08x", load_be32(extension + kTbmSample));
  const uint32_t assertId = load_be32(info + kAssertId);
  out.field("assertId", "%08x (%d)", assertId, static_cast<int>(assertId));
  out.field("numParams", "%08x", load_be32(info + kNumParams));
  for (int i = 0; i < kMaxAssertParams; i++) {
    char name[16];
    std::snprintf(name, sizeof name, "assertParam%d", i);
    out.field(name, "%08x", load_be32(info + kAssertParams + 4 * static_cast<size_t>(i)));
  }
}

// A field that exists once a line, or once a GHS slot.
void indexedWord(const Sink& out, const char* nameFormat, int index, const uint8_t* word) {
  char name[40];
  std::snprintf(name, sizeof name, nameFormat, index);
  out.field(name, "%08x", load_be32(word));
}

// The word of a field that has one for each line.
const uint8_t* wordOfLine(const uint8_t* image, size_t field, int line) {
  return image + field + sizeof(uint32_t) * static_cast<size_t>(line);
}

void printAsserts(const Sink& out, QVR_deviceId_t deviceId, const uint8_t* image) {
  char heading[64];
  for (int line = 0; line < QVR_K_MAX_LINES_PER_DEVICE; line++) {
    const auto index = static_cast<size_t>(line);
    const uint8_t* info = image + DEV_INF_LINK_ASSERT_INFO + index * 2 * kAssertInfoSize;
    const uint8_t* extension = image + DEV_INF_LINK_ASSERT_EXTENSION + index * 2 * kAssertExtensionSize;
    std::snprintf(heading, sizeof heading, "\n<framerAssertInfo [%1d.%1d]>\n", deviceId, line);
    out.heading(heading);
    printAssertRecord(out, info, extension);
    std::snprintf(heading, sizeof heading, "\n<fduAssertInfo [%1d.%1d]>\n", deviceId, line);
    out.heading(heading);
    printAssertRecord(out, info + kAssertInfoSize, extension + kAssertExtensionSize);
  }
  std::snprintf(heading, sizeof heading, "\n<cpAssertInfo[%1d]>\n", deviceId);
  out.heading(heading);
  printAssertRecord(out, image + DEV_INF_CP_ASSERT_INFO, image + DEV_INF_CP_ASSERT_EXTENSION);
}

void printImage(const Sink& out, QVR_deviceId_t deviceId, const uint8_t* image) {
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
  printImage(Sink(cli), deviceId, image);
  cli_print(cli, " ");
}

void printDeviceInfoToFile(FILE* file, QVR_deviceId_t deviceId, const uint8_t* image) {
  printImage(Sink(file), deviceId, image);
}
