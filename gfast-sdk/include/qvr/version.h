// The library's version. The build takes its own version from here.
#pragma once

// A higher major number: programs have to be changed.
// A higher minor number: something new. A higher patch number: something repaired.
#define QVR_VERSION_MAJOR 1
#define QVR_VERSION_MINOR 0
#define QVR_VERSION_PATCH 0
#define QVR_VERSION "1.0.0"
