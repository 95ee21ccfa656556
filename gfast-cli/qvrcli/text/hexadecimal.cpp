#include "qvrcli/text/hexadecimal.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace gfast::console {

void toHexString(const uint8_t* xi_bytes, uint32_t xi_count, char* xo_text) {
  *xo_text = '\0';
  for (uint32_t i = 0; i < xi_count; i++) {
    std::snprintf(xo_text + 3 * size_t{i}, 4, "%02X ", xi_bytes[i]);
  }
}

void toHexNumber(const char* xi_text, uint32_t xi_count, uint8_t* xo_bytes) {
  const size_t length = std::strlen(xi_text);
  for (uint32_t i = 0; i < xi_count; i++) {
    unsigned value = 0;
    if (3 * size_t{i} < length) {
      std::sscanf(xi_text + 3 * size_t{i}, "%02X", &value);
    }
    xo_bytes[i] = static_cast<uint8_t>(value);
  }
}

}  // namespace gfast::console
