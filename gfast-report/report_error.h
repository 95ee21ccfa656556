// Why there is no report.
#pragma once

#include <stdexcept>

namespace gfast::report {

// One line for the user.
class ReportError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace gfast::report
