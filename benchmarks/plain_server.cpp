// The yardstick: the smallest libcli server. Its command `rows` prints the lines of a file with libcli's own
// output, its command `nothing` does nothing.
//
// usage: plain-server [ROWS]
//        plain-server --script SCRIPT   runs the script and ends
//
// plain-web-server is the same beside the smallest cpp-httplib server.
#include <libcli.h>
#include <sys/socket.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "loopback_listener.h"

#ifdef PLAIN_HTTP
#include <httplib.h>

#include <thread>
#endif

namespace {

std::vector<std::string> rows;

#ifdef PLAIN_HTTP
void serveHttp() {
  static httplib::Server server;
  server.Get("/", [](const httplib::Request&, httplib::Response& answer) {
    answer.set_content("ok\n", "text/plain");
  });
  server.bind_to_any_port("127.0.0.1");
  std::thread([] { server.listen_after_bind(); }).detach();
}
#else
void serveHttp() {}
#endif

int printRows(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  for (const std::string& row : rows) {
    cli_print(cli, "%s", row.c_str());
  }
  return CLI_OK;
}

int doNothing(cli_def* /*cli*/, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  return CLI_OK;
}

int runScript(cli_def* cli, const char* path) {
  FILE* const script = std::fopen(path, "r");
  if (script == nullptr) {
    std::perror(path);
    return 1;
  }
  cli_file(cli, script, PRIVILEGE_UNPRIVILEGED, MODE_EXEC);
  std::fclose(script);
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  std::signal(SIGPIPE, SIG_IGN);
  cli_def* cli = cli_init();
  cli_set_hostname(cli, "(gfast-cli)");
  cli_register_command(cli, nullptr, "rows", printRows, PRIVILEGE_UNPRIVILEGED, MODE_EXEC, "Print the rows");
  cli_register_command(cli, nullptr, "nothing", doNothing, PRIVILEGE_UNPRIVILEGED, MODE_EXEC, "Do nothing");
  if (argc > 2 && std::strcmp(argv[1], "--script") == 0) {
    return runScript(cli, argv[2]);
  }
  if (argc > 1) {
    std::ifstream file(argv[1]);
    for (std::string row; std::getline(file, row);) {
      rows.push_back(row);
    }
  }
  serveHttp();
  const LoopbackListener listener = listenOnLoopback();
  std::printf("Listening on port %d\n", listener.port);
  std::fflush(stdout);
  for (;;) {
    const int session = accept(listener.socket, nullptr, nullptr);
    if (session >= 0) {
      cli_loop(cli, session);
    }
  }
}
