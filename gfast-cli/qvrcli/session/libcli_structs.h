// libcli.h for the files that read or change the members of its structs, which another version may use in
// another way.
#pragma once

#include <libcli.h>

// The second name is misspelt in libcli.h itself.
static_assert(
    LIBCLI_VERSION_MAJOR == 1 && LIBCLI_VERISON_MINOR == 10,
    "Another libcli. Check against its source how interpreter_guard.cpp replaces a command's callback, a "
    "filter's init and optargs, how session_printer.cpp takes a line out of the history, how "
    "script_lines.cpp does what "
    "cli_file does, how scripts.cpp puts filters, pipeline, found_optargs and print_callback aside, and how "
    "session_stream.cpp replaces client; then change the version here.");
