// A line's tones as comma-separated values, one row a tone, for a spreadsheet.
#pragma once

#include <string>

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

// The heading row is there without tones, too. A field without a value is empty.
std::string toneRows(const console::LineReading& line);

}  // namespace gfast::report
