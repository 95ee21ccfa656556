// The text of a chip's log message: a printf format that the chip sends along with its parameter words.
//
// The format is data from outside. Every parameter is one 32-bit word, whatever length the format claims.
// Only numbers and characters can be printed:
//   %d %i %u %o %x %X    the word, narrowed by h and hh; flags, width and precision as printf has them
//   %c                   the character of the word's low byte
//   %s %p %f %e %g %a    the word in hexadecimal ("0x1f40"): it is a pointer into the chip's memory, or half
//                        of a number
//   %n                   is printed as it is; its word is skipped
//   %%                   a percent sign
// Anything else, and a conversion without a word, is printed as it is. Widths and precisions are limited to
// kWidestField. A control character other than tab and line ends is shown as '.'.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace gfast {

constexpr size_t kLogParams = 12;
using LogParams = std::array<uint32_t, kLogParams>;

constexpr int kWidestField = 128;  // columns

// The rendered text, cut to `room` (at least 1) characters; a line end of the format is kept. Like any printf
// format, the text ends at its first zero byte.
std::string renderLogText(std::string_view format, const LogParams& params, size_t room);

}  // namespace gfast
