// Words of a command that are not typed in full.
#pragma once

#include <libcli.h>

namespace gfast::console {

// Of the running line's command words, one that fits two commands: an error is printed and true returned.
// libcli compares words whatever their case, but takes case into account when it decides how much of a word
// is enough. So it runs one of two commands that differ in case only as far as the word goes.
bool refusesAbbreviation(cli_def* cli);

}  // namespace gfast::console
