// Protects the interpreter from typed lines that crash it or mean something else to it. To be called once, on
// a fresh interpreter, before it reads anything.
#pragma once

#include <libcli.h>

namespace gfast::console {

// libcli's commands refuse an abbreviation that fits two commands. Its filters are made safe:
//  - A filter that takes the rest of the line joins its words also while a line is only completed. There may
//    be no last word then, and libcli reads through a null pointer. Here such a filter takes one word, and is
//    given the rest of the line when the line runs.
//  - A filter compares the typed name with its full name, so that an abbreviated one does not find the text
//  it
//    is to search for. Here it is always called by its full name.
//  - egrep's repetitions multiply ("((a{99}){99}){99}"), and the compiled pattern grows with them. So does
//    the time to compile repetitions of what may match nothing ("(^)*(^)*(^)*"). Here a pattern whose size is
//    above kLargestPattern is refused.
void guardInterpreter(cli_def* cli);

}  // namespace gfast::console
