// Points in time as they are shown.
#pragma once

#include <ctime>
#include <string>

namespace gfast::console {

// Local time, "2023-11-14T22:15:00+UTC"; empty when the zone's name is too long for 29 characters in all.
std::string localTimeText(time_t time);

}  // namespace gfast::console
