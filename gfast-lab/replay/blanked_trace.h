// Writes a field trace once more, without what tells which customer's it is.
#pragma once

#include <string>

#include "gfast-lab/replay/trace_reader.h"

namespace gfast::replay {

// The trace's text with MAC addresses and serial numbers blanked. Its comments are lost.
std::string blankedText(FieldTrace&& trace);

// Returns 0, or the errno from writing the file.
int writeBlanked(FieldTrace&& trace, const std::string& file);

}  // namespace gfast::replay
