// The yardstick: the smallest libcli server. Its one command, `rows`, prints the lines of a file with
// libcli's own output.
#include <arpa/inet.h>
#include <libcli.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> rows;

int printRows(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  for (const std::string& row : rows) {
    cli_print(cli, "%s", row.c_str());
  }
  return CLI_OK;
}

int listenOnLoopback() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, length) != 0 || listen(listener, 1) != 0 ||
      getsockname(listener, generic, &length) != 0) {
    std::perror("plain-server");
    return -1;
  }
  std::printf("Listening on port %d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  return listener;
}

}  // namespace

int main(int argc, char* argv[]) {
  std::signal(SIGPIPE, SIG_IGN);
  if (argc > 1) {
    std::ifstream file(argv[1]);
    for (std::string row; std::getline(file, row);) {
      rows.push_back(row);
    }
  }
  cli_def* cli = cli_init();
  cli_set_hostname(cli, "(gfast-cli)");
  cli_register_command(cli, nullptr, "rows", printRows, PRIVILEGE_UNPRIVILEGED, MODE_EXEC, "Print the rows");
  const int listener = listenOnLoopback();
  while (listener >= 0) {
    const int session = accept(listener, nullptr, nullptr);
    if (session >= 0) {
      cli_loop(cli, session);
    }
  }
  return 1;
}
