// The text of a chip's log message: a printf format that the chip sends along with its parameter words.
//
// The format is data from outside. Every parameter is one 32-bit word, whatever length the format claims, and
// what a format asks for beyond printing numbers and characters has no meaning on this side:
//   %d %i %u %o %x %X    the word, narrowed by h and hh; flags, width and precision as printf has them
//   %c                   the character of the word's low byte
//   %s %p %f %e %g %a    the word in hexadecimal ("0x1f40"): a pointer into the chip's memory, or a number
//   whose
//                        other half is unknown
//   %n                   stands as it is; its word is passed over
//   %%                   a percent sign
// Anything else, and a conversion whose word is missing, stands as it is. Widths and precisions are held to
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

// The rendered text, cut to `room` (at least 1) characters; a line end that the format brings survives the
// cut. Like any printf format, the text ends at its first zero byte.
std::string renderLogText(std::string_view format, const LogParams& params, size_t room);

}  // namespace gfast
