// Waits of operations that may take long. A program can end them: it installs a question that is asked while
// they wait. Without one they wait as long as it takes.
#pragma once

#include <chrono>

namespace gfast {

// Asked on the thread that waits, at least twice a second, until another is installed; nullptr: none.
void installMayGoOn(bool (*mayGoOn)());

bool mayGoOn();

// Sleeps on the installed clock. False, at once, when the wait is to end.
bool waitWhileAllowed(std::chrono::microseconds duration);

}  // namespace gfast
