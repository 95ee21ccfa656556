// What in a field trace tells which customer's it is: MAC addresses and serial numbers.
#pragma once

#include "driver/field_trace.h"

namespace gfast {

// Overwrites them in what was sent. The same requests stay the same.
void blankRequest(TraceRequest& request);

// Overwrites them in what came back. The request may be blanked before.
void blankAnswer(const TraceRequest& request, TraceAnswer& answer);

}  // namespace gfast
