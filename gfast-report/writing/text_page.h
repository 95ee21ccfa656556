// A line's figures, plots and findings for a terminal of 80 columns.
#pragma once

#include <string>

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

// Which line it is, its state, when and where it was read; `source` says where.
std::string headOf(const console::Reading& reading, const std::string& source);

std::string textPage(const console::Reading& reading, const std::string& source);

// Words in lines of at most so many columns; all but the first begin with `indent` blanks.
std::string wrapped(const std::string& text, size_t indent);

}  // namespace gfast::report
