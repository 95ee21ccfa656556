#include <stdexcept>

#include "gfast-desk/desk/desk.h"

namespace gfast::desk {

class ChildProgram {};

Desk::Desk(const std::vector<std::string>& /*command*/) {
  throw std::runtime_error("serves programs on Linux on 64-bit x86 and ARM processors only");
}

Desk::~Desk() = default;

int Desk::run(Driver& /*board*/) {
  return kCannotServe;
}

}  // namespace gfast::desk
