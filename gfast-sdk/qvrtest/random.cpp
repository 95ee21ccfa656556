#include "qvrtest/random.h"

#include <cstdint>
#include <cstdlib>

using namespace gfast;

int gfast::randi(int xi_imin, int xi_imax) {
  const int64_t count = int64_t{xi_imax} + 1 - xi_imin;
  return count <= 0 ? xi_imin : static_cast<int>(std::rand() % count + xi_imin);
}
