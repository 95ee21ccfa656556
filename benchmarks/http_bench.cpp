// How long a scrape and the page take, beside the smallest server that sends the same bytes.
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "loopback_listener.h"
#include "row.h"
#include "support/board_texts.h"
#include "support/console_session.h"
#include "support/temporary_folder.h"

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr int kTimes = 300;

std::string get(uint16_t port, const std::string& path) {
  ConsoleSession connection(port);
  connection.send("GET " + path + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
  return connection.readToEnd();
}

double medianTime_ms(uint16_t port, const std::string& path) {
  std::vector<double> all_ms;
  for (int i = 0; i < kTimes; i++) {
    const auto start = steady_clock::now();
    get(port, path);
    all_ms.push_back(Milliseconds(steady_clock::now() - start).count());
  }
  return medianOf(all_ms);
}

// Answers so many requests with the same bytes.
void answer(int listener, const std::string& bytes) {
  for (int i = 0; i < kTimes; i++) {
    const int connection = accept(listener, nullptr, nullptr);
    char request[4096];
    if (recv(connection, request, sizeof request, 0) <= 0 ||
        send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0) {
      std::perror("http-bench");
      std::exit(EXIT_FAILURE);
    }
    close(connection);
  }
}

double plainTime_ms(const std::string& bytes) {
  const LoopbackListener listener = listenOnLoopback();
  std::thread server(answer, listener.socket, bytes);
  const double time_ms = medianTime_ms(listener.port, "/");
  server.join();
  close(listener.socket);
  return time_ms;
}

void measure(uint16_t port, const std::string& what, const std::string& path) {
  std::string bytes = get(port, path);
  // Until the first reading is there.
  for (int i = 0; i < 50 && !bytes.starts_with("HTTP/1.1 200 "); i++) {
    std::this_thread::sleep_for(100ms);
    bytes = get(port, path);
  }
  printRow(what, medianTime_ms(port, path), plainTime_ms(bytes), "ms", "< 5 ms");
}

}  // namespace

int main() {
  const TemporaryFolder folder;
  ConsoleProgram lab("", {GFAST_LAB, "--board", folder.write("board.toml", boardWithLines("showtime")),
                          "--port", "0", "--http", "0"});
  const std::string beginning = "Serving http://127.0.0.1:";
  lab.awaitOutput("Listening on port ");
  const std::string& printed = lab.output();
  const auto port =
      static_cast<uint16_t>(std::stoi(printed.substr(printed.find(beginning) + beginning.size())));
  measure(port, "HTTP, a scrape of /metrics", "/metrics");
  measure(port, "HTTP, a line with its tones", "/data/lines/0.json");
  measure(port, "HTTP, the page", "/");
}
