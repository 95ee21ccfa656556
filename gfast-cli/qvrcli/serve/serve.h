// What other machines may read of the lines, over HTTP, when it is asked for.
#pragma once

#include <functional>
#include <string>

namespace gfast::console {

// Serves from now on, until the process ends, on threads of its own. `where` is "[address:]port"; without an
// address that is 127.0.0.1, an address with colons stands in brackets, and port 0 is any free one. Says on
// standard output where it serves. `admits` decides, on any thread, whether the client of a connection is
// served; the others are closed. False after a message on standard error: `where` is nothing of that kind,
// nothing can be bound there, or this program was built without it.
bool serveReadings(const std::string& where, std::function<bool(int connection)> admits);

}  // namespace gfast::console
