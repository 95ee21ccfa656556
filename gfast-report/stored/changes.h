// What is different between two readings of a line, in words and a plot.
#pragma once

#include <string>

#include "gfast-report/stored/stored_reading.h"

namespace gfast::report {

// For a terminal of 80 columns.
std::string changesOf(const StoredReading& before, const StoredReading& after);

}  // namespace gfast::report
