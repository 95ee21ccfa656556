#include "qvrcli/session/session_commands.h"

#include <chrono>
#include <cstdint>
#include <limits>

#include "qvrcli/session/scripts.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/arguments.h"

namespace gfast::console {

namespace {

int CLI_sleep(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const int seconds = words.number(0, 1, 86400, "invalid parameter - must enter value between 1..86400", 0);
  if (!words.refused()) {
    sleepInSession(cli, std::chrono::seconds(seconds));
  }
  return CLI_OK;
}

// After a count that is refused the script runs all the same, as often as the count says.
int CLI_runScript(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  const char* const filename = ArgumentReader(cli, argv, argc).text(0, "clitest.txt");
  uint32_t iterations = 1;
  if (argc > 1 && !isValidUnsignedNumber(argv[1], 1, std::numeric_limits<uint32_t>::max(), &iterations)) {
    cli_print(cli, "Invalid number of iterations counter <%s>", argv[1]);
  }
  return runScript(cli, filename, iterations);
}

constexpr Command kSessionCommands[] = {
    exec("sleep", "Sleep for some seconds", CLI_sleep, exactly<1>, kReads, "sleep <seconds>"),
    exec("run", "Run a CLI script file", CLI_runScript, between<0, 2>, kReads,
         "run [<filename>] [<iterations>]: { clitest.txt }"),
};

}  // namespace

std::span<const Command> sessionCommands() {
  return kSessionCommands;
}

}  // namespace gfast::console
