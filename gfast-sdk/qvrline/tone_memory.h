// A line in showtime, and the chip memory at either end of it that is laid out by subcarrier.
#pragma once

#include <qvr.h>

#include "qvrline/line_table.h"

namespace gfast {

constexpr int MAX_RETRIES = 50;  // readings of what a chip writes meanwhile

// The end of a line whose chip is asked: ours, or the one behind the copper.
enum class LineEnd { kNear, kFar };

// A line as it was found when it was in showtime: everything read of it in one operation is read by this.
struct LineInShowtime {
  QVR_lineId_t id;
  QVR_lineDescriptor_t descriptor;
  QVR_linePhyParams_t tones;  // the processed subcarriers, within the grid
};

// Asks the device whether the line is up and how it is framed now.
//   QVR_E_ERROR  the line is not up, or has no device
//   otherwise as QVR_getLinePhyParams
QVR_retval_t findLineInShowtime(QVR_lineId_t lineId, LineInShowtime* line);

// Reads bytes at the end's address for the line, which the far end numbers 0. No bytes are no request.
//   as QVR_readmem or QVR_readmemFarEnd
QVR_retval_t readTones(const LineInShowtime& line, LineEnd end, uint32_t (*addressOf)(uint32_t linkId),
                       void* bytes, uint32_t size);

}  // namespace gfast
