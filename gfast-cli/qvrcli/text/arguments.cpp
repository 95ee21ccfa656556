#include "qvrcli/text/arguments.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace gfast::console {

namespace {

// What a text begins with.
struct Number {
  bool blank = false;  // nothing but blanks
  bool hasDigits = false;
  long long value = 0;  // the nearest that this type can hold
};

Number scanNumber(const char* text, int base) {
  char* end = nullptr;
  const long long value = std::strtoll(text, &end, base);
  const bool blank = text[std::strspn(text, " \t\n\v\f\r")] == '\0';
  return {blank, end != text, value};
}

int nearestInt(long long value) {
  return static_cast<int>(
      std::clamp<long long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// A negative number wraps around as unsigned arithmetic does; one beyond the range does not.
uint32_t nearestUnsigned(long long value) {
  constexpr long long most = std::numeric_limits<uint32_t>::max();
  return value < -most || value > most ? static_cast<uint32_t>(most) : static_cast<uint32_t>(value);
}

}  // namespace

BOOL isValidNumber(const char* xi_text, int xi_lower, int xi_upper, int* xio_value) {
  const Number number = scanNumber(xi_text, 10);
  if (number.blank) {
    return FALSE;
  }
  if (number.hasDigits) {
    *xio_value = nearestInt(number.value);
  }
  return *xio_value >= xi_lower && *xio_value <= xi_upper ? TRUE : FALSE;
}

BOOL isValidUnsignedNumber(const char* xi_text, uint32_t xi_lower, uint32_t xi_upper, uint32_t* xio_value) {
  const Number number = scanNumber(xi_text, 10);
  if (number.blank) {
    return FALSE;
  }
  if (number.hasDigits) {
    *xio_value = nearestUnsigned(number.value);
  }
  return *xio_value >= xi_lower && *xio_value <= xi_upper ? TRUE : FALSE;
}

BOOL isValidLineId(const char* xi_text, int* xio_lineId) {
  return isValidNumber(xi_text, 0, QVR_K_LINE_ID_LAST, xio_lineId);
}

BOOL isValidDeviceId(const char* xi_text, int* xio_deviceId) {
  return isValidNumber(xi_text, 0, QVR_K_DEVICE_ID_LAST, xio_deviceId);
}

bool isKeyword(const char* xi_text, const char* xi_lowerCase) {
  if (std::strcmp(xi_text, xi_lowerCase) == 0) {
    return true;
  }
  while (*xi_lowerCase != '\0' && *xi_text == std::toupper(static_cast<unsigned char>(*xi_lowerCase))) {
    xi_text++;
    xi_lowerCase++;
  }
  return *xi_text == '\0' && *xi_lowerCase == '\0';
}

bool parseHex(const char* xi_text, uint32_t* xo_value) {
  const Number number = scanNumber(xi_text, 16);
  if (!number.hasDigits) {
    return false;
  }
  *xo_value = nearestUnsigned(number.value);
  return true;
}

}  // namespace gfast::console
