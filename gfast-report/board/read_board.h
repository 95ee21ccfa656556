// A reading without a console: of a virtual board, or of what a field trace holds, in this process.
#pragma once

#include <string>

#include "gfast-report/console/read_console.h"

namespace gfast::report {

// The board that a file describes, so many seconds after it is switched on at 2024-01-01T00:00:00. They take
// no time. Once in a process. A BoardFileError, or a ReportError when it has no such line.
TakenReading readBoard(const std::string& file, QVR_lineId_t line, double seconds);

// What the trace does not hold has no value. Once in a process. A TraceError, or a ReportError as above.
TakenReading readTraced(const std::string& file, QVR_lineId_t line);

}  // namespace gfast::report
