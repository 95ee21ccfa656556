// Keeps a line typed at a session from harming the interpreter that reads it. To be called once, on a fresh
// interpreter, before anything is typed at it.
#pragma once

#include <libcli.h>

namespace gfast::console {

// libcli's filters, made safe:
//  - A filter that takes the rest of the line joins its words while a line is only being completed, when
//    there may be no last word yet, and reads through a null pointer. It takes one word here, and is given
//    the rest of the line when the line runs.
//  - A filter recognises itself by its full name only, so an abbreviated one searches for what it never
//    stored. It is called by its full name here.
//  - egrep's repetitions multiply ("((a{99}){99}){99}"), and the compiled pattern with them: a pattern larger
//    than kLargestPattern is refused.
void guardInterpreter(cli_def* cli);

}  // namespace gfast::console
