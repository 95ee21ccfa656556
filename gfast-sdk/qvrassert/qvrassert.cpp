#include "qvrassert/qvrassert.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

using namespace gfast;

namespace {

// The fault is intended, so neither the optimiser nor a sanitizer may prevent it.
#if defined(__clang__)
__attribute__((no_sanitize("undefined", "address", "thread")))
#else
__attribute__((no_sanitize_undefined, no_sanitize_address, no_sanitize_thread))
#endif
void storeToNull(unsigned value) {
  volatile unsigned* volatile nowhere = nullptr;
  *nowhere = value;  // NOLINT(clang-analyzer-core.NullDereference): that is its purpose
}

}  // namespace

void gfast::DoAssert(unsigned xi_id, const char* xi_file, int xi_line, const char* xi_message,
                     unsigned xi_numParams, ...) {
  std::printf("Assert %1u in file %s at line %1d\n", xi_id, xi_file, xi_line);
  std::puts(xi_message);
  va_list parameters;
  va_start(parameters, xi_numParams);
  for (unsigned i = 0; i < xi_numParams; i++) {
    std::printf("Param %1u = %1d\n", i, va_arg(parameters, int));
  }
  va_end(parameters);
  std::fflush(stdout);  // the fault would lose what is still buffered
  storeToNull(xi_id);
  std::exit(static_cast<int>(xi_id));
}
