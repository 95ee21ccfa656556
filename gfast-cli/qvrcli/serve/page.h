// The page for a browser: all of it in one text, so that no request leaves the machine. It is put together
// when the program is built (cmake/embed-page.cmake).
#pragma once

#include <cstddef>

namespace gfast::console {

extern const char page[];
extern const size_t pageSize;

}  // namespace gfast::console
