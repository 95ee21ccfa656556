// When what the program is built from was committed.
#pragma once

namespace gfast::console {

// Date and time in UTC, such as "Apr  7 2017 17:46:34". The build writes it (cmake/build-time.cmake): with
// the compiler's own __DATE__ the same sources would make another program at each build.
extern const char* const kBuildTime;

}  // namespace gfast::console
