// A line's tones as a drawing.
#pragma once

#include <string>

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

// Four plots over frequency, one below the other. Without tones only the heading is there.
std::string svgPlot(const console::LineReading& line, const std::string& heading);

}  // namespace gfast::report
