// Lines on standard output that must not wait for its reader: whoever prints them has a board or a session to
// serve.
#pragma once

#include <string_view>

namespace gfast::console {

// Prints the text as it is, on any thread. When standard output takes nothing at the moment (a pipe that
// nobody reads, a terminal that was stopped), it waits behind what waits already, and is printed by itself as
// soon as somebody reads. At most 5000 texts wait; of those that come then, the number is printed.
void printWithoutWaiting(std::string_view text);

// Waits until everything is printed or nobody can read it any more. To be called before the process ends.
void finishStandardOutput();

}  // namespace gfast::console
