// A reading of a line, made by typing at a console. What a console does not show has no value in it.
#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

// A reading, and what was not as expected when it was made.
struct TakenReading {
  console::Reading reading;
  std::vector<std::string> remarks;
};

// Returns what a command prints.
using Ask = std::function<std::string(const std::string& command)>;

// Takes what is read now.
using Progress = std::function<void(const std::string& what)>;

// `now` is the time of this machine. A ReportError when there is no such line, or when the other end is no
// console of this kind.
TakenReading readConsole(const Ask& ask, QVR_lineId_t line, time_t now, const Progress& progress);

}  // namespace gfast::report
