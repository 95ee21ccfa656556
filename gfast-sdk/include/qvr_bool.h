// The library's boolean: one byte, in records as in calls.
#pragma once

#include <cstdint>

using BOOL = uint8_t;
constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
