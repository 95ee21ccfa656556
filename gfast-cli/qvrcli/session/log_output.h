// Where standard output goes while sessions are served: what the server, the chips and the library print.
#pragma once

#include <string>

namespace gfast::console {

// Moves standard output to the end of this file, or, for "syslog", line by line into the system's log. The
// file is opened again at SIGHUP, so that another program may rename it before. What the file or the log does
// not take is lost; nobody waits for them. To be called once, before other threads are started. What cannot
// be opened is one line on standard error, and standard output stays where it is until SIGHUP.
void logTo(const std::string& where);

// Reads lines until the end of a descriptor and says each, without its end. Long ones are said in pieces.
void sayLines(int descriptor, void (*say)(const char* line));

}  // namespace gfast::console
