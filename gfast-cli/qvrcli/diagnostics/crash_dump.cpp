#include "qvrcli/diagnostics/crash_dump.h"

#include <limits>
#include <string_view>

#include "chip/device_information.h"
#include "qvrcli/text/text_files.h"
#include "std/byte_order.h"

namespace gfast::console {

namespace {

// ---- Reading ----

constexpr size_t kBlockWords = DEV_INF_SIZE / sizeof(uint32_t);
constexpr size_t kAddressDigits = 8;
constexpr int kOneWordALine = 1;
constexpr int kFourWordsALine = 4;

struct DumpLine {
  uint32_t address = 0;
  uint32_t words[kFourWordsALine] = {};
};

// False for a line that does not begin with an address of eight digits and a colon. With fewer digits, the
// "DFE00:" in front of a chip's log line would count as an address.
bool parseDumpLine(std::string_view text, int wordsPerLine, DumpLine& line) {
  line = {};
  if (text.find(':') != kAddressDigits || !takeHexWord(text, line.address) || !text.starts_with(':')) {
    return false;
  }
  text.remove_prefix(1);
  for (int i = 0; i < wordsPerLine; i++) {
    if (!takeHexWord(text, line.words[i])) {
      dropWord(text);
    }
  }
  return true;
}

// Reads lines up to and including the one at the address.
bool findAddress(LineReader& lines, int wordsPerLine, uint32_t address, DumpLine& line) {
  std::string_view text;
  while (lines.next(text)) {
    if (parseDumpLine(text, wordsPerLine, line) && line.address == address) {
      return true;
    }
  }
  return false;
}

bool nextDumpLine(LineReader& lines, int wordsPerLine, DumpLine& line) {
  std::string_view text;
  while (lines.next(text)) {
    if (parseDumpLine(text, wordsPerLine, line)) {
      return true;
    }
  }
  return false;
}

// False at the end of the file.
bool readBlock(LineReader& lines, int wordsPerLine, DEV_INF_S& block) {
  DumpLine line;
  size_t stored = 0;
  bool more = findAddress(lines, wordsPerLine, QVR_K_CRASH_DUMP_ADDRESS, line);
  while (more) {
    for (int i = 0; i < wordsPerLine && stored < kBlockWords; i++) {
      store_be32(block.bytes + sizeof(uint32_t) * stored++, line.words[i]);
    }
    if (stored == kBlockWords) {
      return true;
    }
    more = nextDumpLine(lines, wordsPerLine, line);
  }
  return false;
}

// ---- Leading assertion ----

// A device's processors: where their records are in its block, and the line they are shown with.
struct Processor {
  CLI_CPU_TYPE_E type;
  size_t info;
  size_t extension;
  QVR_lineId_t line;
};

constexpr Processor kProcessors[] = {
    {CPU_FRAMER, DEV_INF_LINK_ASSERT_INFO, DEV_INF_LINK_ASSERT_EXTENSION, 0},
    {CPU_FDU, DEV_INF_LINK_ASSERT_INFO + CPU_ASSERT_INFO_SIZE,
     DEV_INF_LINK_ASSERT_EXTENSION + CPU_ASSERT_EXTENSION_SIZE, 0},
    {CPU_CP, DEV_INF_CP_ASSERT_INFO, DEV_INF_CP_ASSERT_EXTENSION, QVR_K_MAX_LINES_PER_DEVICE},
};
static_assert(QVR_K_MAX_LINES_PER_DEVICE == 1, "a block has the processors of one line");

CLI_leadingAssert_t assertOf(QVR_deviceId_t device, const Processor& processor, const uint8_t* block) {
  const uint8_t* const extension = block + processor.extension;
  return {
      .assertId = load_be32(block + processor.info + CPU_ASSERT_INFO_ASSERT_ID),
      .symbolCounter = load_be32(extension + CPU_ASSERT_EXTENSION_SYMBOL_COUNTER),
      .tbmSymbol = load_be32(extension + CPU_ASSERT_EXTENSION_TBM_SYMBOL),
      .tbmPhase = load_be32(extension + CPU_ASSERT_EXTENSION_TBM_PHASE),
      .tbmSample = load_be32(extension + CPU_ASSERT_EXTENSION_TBM_SAMPLE),
      .deviceId = device,
      .lineId = processor.line,
      .cpuType = processor.type,
      .count = 1,
  };
}

}  // namespace

BOOL loadDeviceInfoFromFile(const char* xi_filename, DEV_INF_S* xo_devInf, int xi_numberOfAddressesPerLine) {
  if (xi_numberOfAddressesPerLine != kOneWordALine && xi_numberOfAddressesPerLine != kFourWordsALine) {
    return FALSE;
  }
  const TextFile file = openForReading(xi_filename);
  if (file == nullptr) {
    return FALSE;
  }
  LineReader lines(file.get());
  for (int device = 0;
       device < QVR_K_MAX_DEVICES && readBlock(lines, xi_numberOfAddressesPerLine, xo_devInf[device]);
       device++) {
  }
  return TRUE;
}

void findLeadingAssert(const DEV_INF_S* xi_devInf, CLI_leadingAssert_t* xo_leadingAssert) {
  *xo_leadingAssert = {};
  uint32_t earliest = std::numeric_limits<uint32_t>::max();
  for (QVR_deviceId_t device = 0; device < QVR_K_MAX_DEVICES; device++) {
    for (const Processor& processor : kProcessors) {
      const CLI_leadingAssert_t assertion = assertOf(device, processor, xi_devInf[device].bytes);
      if (assertion.symbolCounter != 0 && assertion.symbolCounter < earliest) {
        *xo_leadingAssert = assertion;
        earliest = assertion.symbolCounter;
      } else if (assertion.symbolCounter == earliest) {
        xo_leadingAssert->count++;
      }
    }
  }
}

}  // namespace gfast::console
