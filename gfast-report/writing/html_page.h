// The page of the server as one file, with the reading in it.
#pragma once

#include <string>

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

// It asks nobody, and nothing is beside it.
std::string htmlPage(const console::Reading& reading);

}  // namespace gfast::report
