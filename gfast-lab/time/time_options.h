// How the command line says how time passes.
#pragma once

#include <ctime>
#include <limits>
#include <optional>
#include <string>

namespace gfast::lab {

// The speed that goes from event to event.
constexpr double kNextEventAtOnce = std::numeric_limits<double>::infinity();

// "max", or seconds of the board in a second of real time: 0.01 to 100000. Empty when it is neither.
std::optional<double> parseSpeed(const std::string& text);

// A local time of day, "2024-05-02T18:30:00". Empty when it is none.
std::optional<time_t> parseStart(const std::string& text);

}  // namespace gfast::lab
