// The library's version. The build takes its own version from here.
#pragma once

// A higher major number: programs have to be changed; before 1.0 a higher minor number may ask for that, too.
// A higher minor number: something new. A higher patch number: something repaired.
#define QVR_VERSION_MAJOR 0
#define QVR_VERSION_MINOR 9
#define QVR_VERSION_PATCH 0
#define QVR_VERSION "0.9.0"
