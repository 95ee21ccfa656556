// The lines of a test's system, in the table without a start of the library.
#pragma once

#include "qvrline/line_table.h"

using namespace gfast;

// Each device carries one line: the chip at the network side line 0, the one at the subscriber side line 1.
constexpr QVR_lineId_t kNetworkSide = 0;
constexpr QVR_lineId_t kSubscriberSide = 1;

inline void enterBothLines() {
  addLine(kNetworkSide, 0, 0, TRUE);
  addLine(kSubscriberSide, 1, 0, FALSE);
}
