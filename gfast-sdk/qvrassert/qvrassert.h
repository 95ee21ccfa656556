// Broken invariants end the process on purpose, with a report and a core image.
#pragma once

namespace gfast {

// Assertion ids.
constexpr unsigned QVR_K_ASSERT_DEVICE_ID = 100;   // device layer: a device id out of range
constexpr unsigned QVR_K_ASSERT_ODD_LENGTH = 101;  // chip memory is read and written in pairs of bytes
constexpr unsigned QVR_K_ASSERT_LINE = 200;        // line layer: a line id out of range, a response too large
constexpr unsigned QVR_K_ASSERT_FFT_SIZE = 201;    // FFT: size not a power of 2

// Prints the assertion, its message and xi_numParams int parameters, and ends the process by a memory-access
// fault.
[[noreturn]] void DoAssert(unsigned xi_id, const char* xi_file, int xi_line, const char* xi_message,
                           unsigned xi_numParams, ...);

}  // namespace gfast
