// A reading that was kept as JSON, by this program, the server or its page.
#pragma once

#include <string>
#include <vector>

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

struct StoredEnd {
  std::string vendor, version, serialNumber;
  bool operator==(const StoredEnd&) const = default;
};

struct StoredErrors {
  uint64_t measured_s = 0;  // the history and the running quarter hour
  uint64_t network = 0, subscriber = 0;
};

struct StoredFinding {
  std::string what, text;
};

struct StoredReading {
  std::string name;  // of the line
  std::string time;
  std::string state;
  std::string firmware;
  // Rates, margin, power.
  console::DirectionReading downstream, upstream;
  console::ToneReading tones;  // without time; empty when the line was not up
  StoredEnd network, subscriber;
  StoredErrors errors;
  std::vector<StoredFinding> findings;
};

// A ReportError, which names the file, when it is no such document. What is not as it should be in one has no
// value.
StoredReading readStored(const std::string& file);

// The same of a text; `name` stands for it in messages.
StoredReading storedIn(const std::string& text, const std::string& name);

}  // namespace gfast::report
