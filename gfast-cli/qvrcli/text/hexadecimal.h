// Bytes as hexadecimal text, and back.
#pragma once

#include <cstdint>

namespace gfast::console {

// "%02X " for each byte: three characters a byte and a terminator in xo_text.
void toHexString(const uint8_t* xi_bytes, uint32_t xi_count, char* xo_text);

// The inverse of toHexString: two characters at every third position. Text that ends early gives zero bytes.
void toHexNumber(const char* xi_text, uint32_t xi_count, uint8_t* xo_bytes);

}  // namespace gfast::console
