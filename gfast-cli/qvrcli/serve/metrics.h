// A reading as OpenMetrics text, for Prometheus and whatever else reads that.
#pragma once

#include <string>

#include "qvrcli/reading/line_reading.h"

namespace gfast::console {

constexpr const char* kMetricsType = "application/openmetrics-text; version=1.0.0; charset=utf-8";

// Ends in "# EOF". Of a line that does not answer there is dsl_up alone; what has no value has no sample.
std::string metricsText(const Reading& reading);

}  // namespace gfast::console
