// What a reading of a line means: plain statements with numbers, each by one rule. docs/findings.md has the
// rules, their limits, and how far to rely on them.
#pragma once

#include <string>
#include <vector>

#include "qvrcli/reading/line_reading.h"

namespace gfast::console {

enum class Sureness { kSure, kLikely, kPossible };

struct Finding {
  const char* what;  // one of a few words, for programs: "bridged-tap"
  Sureness sureness;
  std::string text;
};

const char* wordOf(Sureness sureness);

// Depends on the reading alone. What has no value is nobody's fault, so a line that is not up, or whose tones
// were not read, has only what its counters tell.
std::vector<Finding> findingsIn(const LineReading& line);

}  // namespace gfast::console
