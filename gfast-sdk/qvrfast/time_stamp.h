// Local time as the counters' history writes it: time stamps, and the quarter hour of the day.
#pragma once

#include <qvr.h>

namespace gfast {

// "%Y-%m-%dT%H:%M:%S+%Z" of local time, cut to the text's room where the zone's name is long.
void formatTimeStamp(time_t time, G9972_timeStamp_t& stamp);

// The quarter hour of the local day that this moment belongs to: 1 to 96, by what the clock shows, so a day
// that summer time makes longer or shorter repeats or leaves out four of them.
uint32_t intervalNumberAt(time_t time);

}  // namespace gfast
