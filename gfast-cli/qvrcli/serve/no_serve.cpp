// In place of serve.cpp in a program that is built without it.
#include <cstdio>

#include "qvrcli/serve/serve.h"

namespace gfast::console {

// NOLINTNEXTLINE(performance-unnecessary-value-param): the one that serves keeps it
bool serveReadings(const std::string& where, std::function<bool(int connection)> /*admits*/) {
  std::fprintf(stderr, "%s: this program was built without HTTP\n", where.c_str());
  return false;
}

}  // namespace gfast::console
