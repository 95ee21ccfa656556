// Board files that several tests use.
#pragma once

#include <string>

// Two chips whose lines are in this state at power-up.
inline std::string boardWithLines(const std::string& state, const std::string& firstSide = "dp",
                                  const std::string& secondSide = "cpe") {
  const auto device = [&](const std::string& side) {
    return "[[device]]\nside = \"" + side + "\"\nline = \"" + state + "\"\n";
  };
  return device(firstSide) + device(secondSide);
}
