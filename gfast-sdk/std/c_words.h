// Words of 32 bits with names, for headers that C reads too.
//
// An enumeration of them is a type of its own in C++ and a plain word in C. Words without a name are values
// that others may stand beside.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
#define GFAST_API_ENUM(name) enum name : uint32_t
#define GFAST_API_WORDS enum : uint32_t
#else
#define GFAST_API_ENUM(name) \
  typedef uint32_t name;     \
  enum
#define GFAST_API_WORDS enum
#endif
