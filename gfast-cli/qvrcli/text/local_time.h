// Points in time as they are shown.
#pragma once

#include <ctime>
#include <string>

namespace gfast::console {

// Local time, "2023-11-14T22:15:00+UTC", however long the zone's name is.
std::string localTimeText(time_t time);

}  // namespace gfast::console
