// The library's version. The build takes its own version from here.
#pragma once

#define QVR_VERSION_MAJOR 0
#define QVR_VERSION_MINOR 9
#define QVR_VERSION_PATCH 0
#define QVR_VERSION "0.9.0"
