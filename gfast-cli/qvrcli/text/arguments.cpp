#include "qvrcli/text/arguments.h"

#include <cctype>
#include <cstring>
#include <limits>

namespace gfast::console {

namespace {

bool isBlank(char character) {
  return std::isspace(static_cast<unsigned char>(character)) != 0;
}

// The value of a digit in any base up to 16; 16 for anything else.
uint32_t digitValue(char character) {
  if (character >= '0' && character <= '9') {
    return static_cast<uint32_t>(character - '0');
  }
  const int lower = std::tolower(static_cast<unsigned char>(character));
  return lower >= 'a' && lower <= 'f' ? static_cast<uint32_t>(lower - 'a') + 10 : 16;
}

// What a text holds in front: a sign, a magnitude that stops growing beyond 32 bits, whether there was a
// digit.
struct Number {
  bool blank = false;  // nothing but blanks
  bool negative = false;
  bool hasDigits = false;
  uint64_t magnitude = 0;
};

constexpr uint64_t kBeyondRange = uint64_t{1} << 32;

Number scanNumber(const char* text, uint32_t base) {
  Number number;
  while (isBlank(*text)) {
    text++;
  }
  number.blank = *text == '\0';
  if (*text == '-' || *text == '+') {
    number.negative = *text++ == '-';
  }
  if (base == 16 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    number.hasDigits = true;
    text += 2;
  }
  for (uint32_t digit = digitValue(*text); digit < base; digit = digitValue(*++text)) {
    number.hasDigits = true;
    number.magnitude = number.magnitude * base + digit;
    if (number.magnitude > kBeyondRange) {
      number.magnitude = kBeyondRange;
    }
  }
  return number;
}

int nearestInt(const Number& number) {
  const int64_t value =
      number.negative ? -static_cast<int64_t>(number.magnitude) : static_cast<int64_t>(number.magnitude);
  if (value > std::numeric_limits<int>::max()) {
    return std::numeric_limits<int>::max();
  }
  if (value < std::numeric_limits<int>::min()) {
    return std::numeric_limits<int>::min();
  }
  return static_cast<int>(value);
}

// A negative number wraps around as unsigned arithmetic does; one beyond the range does not.
uint32_t nearestUnsigned(const Number& number) {
  if (number.magnitude > std::numeric_limits<uint32_t>::max()) {
    return std::numeric_limits<uint32_t>::max();
  }
  const auto magnitude = static_cast<uint32_t>(number.magnitude);
  return number.negative ? 0 - magnitude : magnitude;
}

}  // namespace

BOOL isValidNumber(const char* xi_text, int xi_lower, int xi_upper, int* xio_value) {
  const Number number = scanNumber(xi_text, 10);
  if (number.blank) {
    return FALSE;
  }
  if (number.hasDigits) {
    *xio_value = nearestInt(number);
  }
  return *xio_value >= xi_lower && *xio_value <= xi_upper ? TRUE : FALSE;
}

BOOL isValidUnsignedNumber(const char* xi_text, uint32_t xi_lower, uint32_t xi_upper, uint32_t* xio_value) {
  const Number number = scanNumber(xi_text, 10);
  if (number.blank) {
    return FALSE;
  }
  if (number.hasDigits) {
    *xio_value = nearestUnsigned(number);
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
  *xo_value = nearestUnsigned(number);
  return true;
}

}  // namespace gfast::console
