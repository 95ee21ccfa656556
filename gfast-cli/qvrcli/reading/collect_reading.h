// Reads the lines, through the library's public operations only. Nothing is asked of a chip that changes or
// clears something in it, and nothing that is read stays in the library.
#pragma once

#include "qvrcli/reading/line_reading.h"

namespace gfast::console {

// Everything but the tones. On a thread that has called QVR_observeOnly, as collectTones.
Reading collectReading();

// The tones of a line that is up; none when it is not.
std::shared_ptr<const ToneReading> collectTones(QVR_lineId_t line);

}  // namespace gfast::console
