// A reading in the published model of the field: Broadband Forum TR-355 (ietf-interfaces, bbf-fastdsl,
// bbf-fast), as JSON after RFC 7951. What the model has no place for is beside it, in an object of our own,
// whose module is docs/monitoring/gfast-cli-reading.yang.
#pragma once

#include <optional>
#include <string>

#include "qvrcli/reading/line_reading.h"

namespace gfast::console {

// All lines: status, channel status, inventory and the running intervals.
std::string linesDocument(const Reading& reading);

// One line with everything: history and tones too. Nothing for a line that the reading does not have.
std::optional<std::string> lineDocument(const Reading& reading, QVR_lineId_t line);

}  // namespace gfast::console
