// Numeric arguments: parsed as scanf's "%d" and "%u" do, then judged against inclusive bounds.
#pragma once

#include <qvr.h>

#include <cstdint>

namespace gfast::console {

// Parses leading blanks, a sign and digits; what follows the digits is ignored ("12abc" is 12). A text
// without digits converts nothing, and the value already in *xio_value is judged. A text of blanks only is
// refused. A number beyond the type becomes the nearest one that the type can hold.
BOOL isValidNumber(const char* xi_text, int xi_lower, int xi_upper, int* xio_value);
BOOL isValidUnsignedNumber(const char* xi_text, uint32_t xi_lower, uint32_t xi_upper, uint32_t* xio_value);

// isValidNumber within 0..QVR_K_LINE_ID_LAST and 0..QVR_K_DEVICE_ID_LAST.
BOOL isValidLineId(const char* xi_text, int* xio_lineId);
BOOL isValidDeviceId(const char* xi_text, int* xio_deviceId);

// The word, in exactly the two forms the console takes: all lower case or all upper case.
bool isKeyword(const char* xi_text, const char* xi_lowerCase);

// A hexadecimal number as scanf's "%x" takes it, with or without "0x": false when the text holds none. One
// beyond 32 bits is 0xFFFFFFFF.
bool parseHex(const char* xi_text, uint32_t* xo_value);

}  // namespace gfast::console
