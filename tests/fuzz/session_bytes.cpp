// What a telnet client might send: the input goes through the relay and the line editor to the interpreter,
// then the client ends its side and reads until the session is over.
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "fuzz/fuzzed_console.h"
#include "qvrcli/session/session_printer.h"
#include "qvrcli/session/session_relay.h"
#include "qvrcli/session/session_stream.h"

using namespace gfast::console;

namespace {

constexpr size_t kMostRead = size_t{4} << 20;  // then the client is gone

void beClient(int socket, Input input) {
  while (!input.empty()) {
    const ssize_t sent = send(socket, input.data(), input.size(), MSG_NOSIGNAL);
    if (sent <= 0) {
      break;
    }
    input = input.subspan(static_cast<size_t>(sent));
  }
  shutdown(socket, SHUT_WR);
  char received[16384];
  size_t read = 0;
  for (ssize_t count; read < kMostRead && (count = recv(socket, received, sizeof received, 0)) > 0;) {
    read += static_cast<size_t>(count);
  }
  close(socket);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Input input(data, size);
  if (textOf(input).find('/') != std::string_view::npos) {
    return 0;  // commands write files; those of other folders are not the fuzzer's
  }
  FuzzedConsole& fuzzed = FuzzedConsole::get();
  int sockets[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) < 0) {
    std::abort();
  }
  std::thread client(beClient, sockets[0], input);
  cli_def* const interpreter = fuzzed.console().interpreter();
  fuzzed.act([&] {
    const SessionRelay relay(sockets[1]);
    forgetWaiting();
    cli_print_callback(interpreter, printToSession);
    try {
      if (cli_loop(interpreter, relay.interpreterSocket()) != CLI_OK) {
        close(relay.interpreterSocket());
      }
    } catch (...) {
      close(relay.interpreterSocket());
      throw;
    }
  });
  client.join();
  fuzzed.console().keepPrints();
  return 0;
}
