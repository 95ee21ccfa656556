#include "qvrcli/diagnostics/signal_files.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <string_view>

#include "qvrcli/text/text_files.h"

namespace gfast::console {

namespace {

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t") == std::string_view::npos;
}

// Writes one line for each index, until one cannot be written.
template <typename WriteLine>
BOOL writeLines(const char* path, uint32_t count, WriteLine writeLine) {
  OutputFile file(path);
  if (!file.isOpen()) {
    return FALSE;
  }
  for (uint32_t i = 0; i < count && writeLine(file.get(), i) >= 0; i++) {
  }
  return file.finish() ? TRUE : FALSE;
}

// A ratio of nothing to nothing is no number; whether that has a sign differs from one processor to the next.
double withoutNanSign(double value) {
  return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

}  // namespace

BOOL loadSignalFromFile(const char* path, uint32_t* signal, uint32_t* xo_badLine) {
  const TextFile file = openForReading(path);
  if (file == nullptr) {
    return FALSE;
  }
  LineReader lines(file.get());
  uint32_t lineNumber = 0;
  uint32_t badLine = 0;
  std::string_view line;
  for (uint32_t words = 0; words < QVR_K_SIGNAL_WORDS && badLine == 0 && lines.next(line);) {
    lineNumber++;
    uint32_t word = 0;
    if (takeHexWord(line, word) && isBlank(line)) {
      signal[words++] = word;
    } else if (!isBlank(line)) {
      badLine = lineNumber;
    }
  }
  if (xo_badLine != nullptr) {
    *xo_badLine = badLine;
  }
  return TRUE;
}

BOOL dumpTxSignalToFile(const uint32_t* signal, const char* path) {
  return writeLines(path, QVR_K_SIGNAL_WORDS,
                    [signal](FILE* file, uint32_t i) { return std::fprintf(file, "%08X\n", signal[i]); });
}

BOOL dumpSignalToFile(const QVR_complex_t* signal, const char* path) {
  return writeLines(path, QVR_K_SIGNAL_WORDS, [signal](FILE* file, uint32_t i) {
    return std::fputs(
        fmt::format("{:f} {:f}\n", withoutNanSign(signal[i].real()), withoutNanSign(signal[i].imag()))
            .c_str(),
        file);
  });
}

BOOL dumpMtprToFile(const double* mtpr, const char* path) {
  return writeLines(path, QVR_K_MTPR_TONES, [mtpr](FILE* file, uint32_t i) {
    return std::fputs(fmt::format("{:f}\n", withoutNanSign(mtpr[i])).c_str(), file);
  });
}

}  // namespace gfast::console
