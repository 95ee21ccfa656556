// A line in showtime, and the chip memory at either end of it that is laid out by subcarrier.
#pragma once

#include <qvr.h>

#include "qvrline/line_table.h"

namespace gfast {

constexpr int MAX_RETRIES = 50;  // tries to read what a chip may write at the same time

// The end of a line whose chip is asked.
enum class LineEnd { kNear, kFar };

// A line as it was found in showtime. One operation uses it for all its reads.
struct LineInShowtime {
  QVR_lineId_t id;
  QVR_lineDescriptor_t descriptor;
  QVR_linePhyParams_t tones;  // the processed subcarriers, within the grid
};

// Asks the device whether the line is up and how it is framed now.
//   QVR_E_ERROR  the line is not up, or has no device
//   otherwise as QVR_getLinePhyParams
QVR_retval_t findLineInShowtime(QVR_lineId_t lineId, LineInShowtime* line);

// Reads bytes at the end's address for the line; the far end numbers its line 0. With size 0 it makes no
// request.
//   as QVR_readmem or QVR_readmemFarEnd
QVR_retval_t readTones(const LineInShowtime& line, LineEnd end, uint32_t (*addressOf)(uint32_t linkId),
                       void* bytes, uint32_t size);

}  // namespace gfast
