// Signals and measured ratios as text files.
#pragma once

#include <qvr.h>

#include <cstdint>

namespace gfast::console {

// Reads a transmit signal: one hexadecimal word of at most eight digits a line, at most QVR_K_SIGNAL_WORDS.
// Empty lines are skipped. A line of another form ends the reading; its number goes to *xo_badLine (0 when
// there is none) unless that is nullptr. The rest of the buffer is not changed.
//   FALSE  the file cannot be opened
BOOL loadSignalFromFile(const char* path, uint32_t* signal, uint32_t* xo_badLine = nullptr);

// Each writes one file, created or emptied first:
//   a transmit signal, QVR_K_SIGNAL_WORDS lines "%08X"
//   the first QVR_K_SIGNAL_WORDS points of a signal, lines "%lf %lf" of real and imaginary parts
//   QVR_K_MTPR_TONES missing-tone power ratios, lines "%lf"
// Infinity and not-a-number are written as printf does.
//   FALSE  not everything could be written; errno says why
BOOL dumpTxSignalToFile(const uint32_t* signal, const char* path);
BOOL dumpSignalToFile(const QVR_complex_t* signal, const char* path);
BOOL dumpMtprToFile(const double* mtpr, const char* path);

}  // namespace gfast::console
