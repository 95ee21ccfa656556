// Local time as the counters' history writes it: time stamps, and the quarter hour of the day.
#pragma once

#include <qvr.h>

namespace gfast {

// Writes local time as "%Y-%m-%dT%H:%M:%S+%Z", cut to the size of the stamp if the zone's name is long.
void formatTimeStamp(time_t time, G9972_timeStamp_t& stamp);

// The number of the quarter hour in the local day, 1 to 96, computed from the local time. So four numbers
// come twice on a day that summer time makes longer, and four are left out on a shorter one.
uint32_t intervalNumberAt(time_t time);

}  // namespace gfast
