#include "qvrcli/session/session_printer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "qvrcli/session/libcli_structs.h"
#include "qvrcli/session/line_limit.h"
#include "qvrcli/session/stop.h"

namespace gfast::console {

namespace {

constexpr char kRefusedCommand[] = {kRefusedLine, '\0'};

// Whether the line that runs stands for one that was refused. It is not one to bring back later.
bool takeRefusedLine(cli_def* cli) {
  // Behind the first empty entry all are empty.
  const auto end = std::partition_point(std::begin(cli->history), std::end(cli->history),
                                        [](const char* line) { return line != nullptr; });
  if (end == std::begin(cli->history) || std::string_view(*(end - 1)) != kRefusedCommand) {
    return false;
  }
  std::free(*(end - 1));
  *(end - 1) = nullptr;
  return true;
}

// After an interrupt, what the command still prints is not shown. Not every line looks for one, because that
// takes longer than to print the line.
bool isShown(cli_def* cli) {
  constexpr unsigned between = 64;
  static unsigned lines = 0;
  if (++lines % between == 0) {
    mayGoOn(cli);
  }
  return !interrupted();
}

}  // namespace

void printToSession(cli_def* cli, const char* line) {
  if (cli->client == nullptr || !isShown(cli)) {
    return;
  }
  if (takeRefusedLine(cli)) {
    std::fprintf(cli->client, "Line too long (more than %zu characters)\r\n", kLongestLine);
  } else {
    std::fputs(line, cli->client);
    std::fputs("\r\n", cli->client);
  }
}

}  // namespace gfast::console
