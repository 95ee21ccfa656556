#include "gfast-lab/time/time_options.h"

#include <cstdlib>

namespace gfast::lab {

std::optional<double> parseSpeed(const std::string& text) {
  constexpr double least = 0.01;
  constexpr double most = 100000;
  if (text == "max") {
    return kNextEventAtOnce;
  }
  char* rest = nullptr;
  const double speed = std::strtod(text.c_str(), &rest);
  const bool whole = !text.empty() && *rest == '\0';
  return whole && speed >= least && speed <= most ? std::optional(speed) : std::nullopt;
}

std::optional<time_t> parseStart(const std::string& text) {
  tm local{};
  const char* const rest = ::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &local);
  if (rest == nullptr || *rest != '\0') {
    return std::nullopt;
  }
  local.tm_isdst = -1;
  const time_t start = std::mktime(&local);
  return start < 0 ? std::nullopt : std::optional(start);
}

}  // namespace gfast::lab
