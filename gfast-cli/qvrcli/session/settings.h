// What the environment says about who may use the console, and for what, and where it logs. Without it
// nothing is restricted, and standard output stays where it is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "qvrcli/session/networks.h"

namespace gfast::console {

struct Settings {
  std::optional<Endpoint> listen;               // GFAST_LISTEN
  std::optional<std::vector<Network>> allowed;  // GFAST_ALLOW: clients that are served
  std::optional<std::string> filesFolder;       // GFAST_FILES: every file name of a session stays inside
  bool readOnly = false;                        // GFAST_READ_ONLY
  std::optional<std::string> log;               // GFAST_LOG: where standard output goes
};

// Reads all of them. Nothing, after one line on standard error, when one is not as it should be: a console
// must not serve with less protection than was asked for.
std::optional<Settings> readSettings();

}  // namespace gfast::console
