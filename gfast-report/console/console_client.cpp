#include "gfast-report/console/console_client.h"

#include <fmt/format.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "gfast-report/report_error.h"

namespace gfast::report {

namespace {

using namespace std::chrono_literals;

constexpr std::string_view kPrompt = "\r\n(gfast-cli)> ";
constexpr size_t kMostReply = size_t{1} << 20;  // ten times the longest table
constexpr int kSessions = 3;                    // that may be lost for one command
constexpr auto kPatienceToConnect = 10s;
constexpr auto kTellAfter = 2s;

constexpr unsigned char kInterpretAsCommand = 255;
constexpr unsigned char kSubnegotiationBegins = 250;
constexpr unsigned char kSubnegotiationEnds = 240;
constexpr unsigned char kFirstWithOption = 251;  // will, won't, do, don't

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

std::string nameOf(const ConsoleClient::Address& address) {
  return address.host + ":" + address.port;
}

Addresses addressesOf(const ConsoleClient::Address& address) {
  addrinfo wanted{};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(address.host.c_str(), address.port.c_str(), &wanted, &found);
  if (error != 0) {
    throw ReportError(fmt::format("{}: {}", nameOf(address), gai_strerror(error)));
  }
  return {found, freeaddrinfo};
}

// The time to connect is limited as that to send.
int connectedTo(const addrinfo& address) {
  const int connection = socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC, address.ai_protocol);
  if (connection < 0) {
    return -1;
  }
  const timeval patience{std::chrono::seconds(kPatienceToConnect).count(), 0};
  setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  if (::connect(connection, address.ai_addr, address.ai_addrlen) == 0) {
    return connection;
  }
  const int error = errno == EINPROGRESS ? ETIMEDOUT : errno;
  close(connection);
  errno = error;
  return -1;
}

bool sendAll(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) {
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(std::max<ssize_t>(sent, 0)));
  }
  return true;
}

}  // namespace

void TelnetFilter::add(std::string_view bytes, std::string& text) {
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    const bool isCommand = byte == kInterpretAsCommand;
    switch (state_) {
      case State::kText:
        if (isCommand) {
          state_ = State::kCommand;
        } else {
          text += character;
        }
        break;
      case State::kCommand:
        if (byte == kSubnegotiationBegins) {
          state_ = State::kSubnegotiation;
        } else {
          state_ = byte >= kFirstWithOption && !isCommand ? State::kOption : State::kText;
        }
        break;
      case State::kOption:
        state_ = State::kText;
        break;
      case State::kSubnegotiation:
        state_ = isCommand ? State::kSubnegotiationCommand : state_;
        break;
      case State::kSubnegotiationCommand:
        state_ = byte == kSubnegotiationEnds ? State::kText : State::kSubnegotiation;
        break;
    }
  }
}

ConsoleClient::ConsoleClient(Address address, Limits limits, Tell tell)
    : address_(std::move(address)), limits_(limits), tell_(std::move(tell)) {}

ConsoleClient::~ConsoleClient() {
  if (socket_ >= 0 && hasPrompt()) {
    quit();
  }
  disconnect();
}

// A console behind a serial line is not told when a connection just ends.
void ConsoleClient::quit() {
  constexpr int kTries = 10;
  if (!sendAll(socket_, "quit\r\n")) {
    return;
  }
  for (int i = 0; i < kTries; i++) {
    char ignored[256];
    pollfd ready{socket_, POLLIN, 0};
    if (poll(&ready, 1, 100) > 0 && recv(socket_, ignored, sizeof ignored, 0) <= 0) {
      return;
    }
  }
}

void ConsoleClient::disconnect() {
  if (socket_ >= 0) {
    close(socket_);
  }
  socket_ = -1;
  filter_ = {};
  received_.clear();
}

void ConsoleClient::connect() {
  const Addresses addresses = addressesOf(address_);
  for (const addrinfo* address = addresses.get(); address != nullptr && socket_ < 0;
       address = address->ai_next) {
    socket_ = connectedTo(*address);
  }
  if (socket_ < 0) {
    throw ReportError(fmt::format("{}: {}", nameOf(address_), std::strerror(errno)));
  }
  awaitFirstPrompt();
}

bool ConsoleClient::hasPrompt() const {
  return received_.ends_with(kPrompt);
}

ConsoleClient::Received ConsoleClient::receive(std::chrono::milliseconds patience) {
  pollfd ready{socket_, POLLIN, 0};
  const int count = poll(&ready, 1, static_cast<int>(patience.count()));
  if (count <= 0) {
    return Received::kNothing;
  }
  char bytes[16384];
  const ssize_t size = recv(socket_, bytes, sizeof bytes, 0);
  if (size <= 0) {
    return size < 0 && errno == EINTR ? Received::kNothing : Received::kEnd;
  }
  filter_.add({bytes, static_cast<size_t>(size)}, received_);
  if (received_.size() > kMostReply) {
    throw ReportError(fmt::format("{}: more than {} bytes without a prompt: this is no console of this kind",
                                  nameOf(address_), kMostReply));
  }
  return Received::kSome;
}

// The console has one session at a time. Who connects meanwhile is let in when it has ended.
void ConsoleClient::awaitFirstPrompt() {
  const auto began = std::chrono::steady_clock::now();
  bool told = false;
  while (!hasPrompt()) {
    const auto waited = std::chrono::steady_clock::now() - began;
    if (waited > limits_.busy) {
      throw ReportError(fmt::format("{}: still busy after {} s", nameOf(address_),
                                    std::chrono::duration_cast<std::chrono::seconds>(limits_.busy).count()));
    }
    if (!told && waited > kTellAfter) {
      tell_(fmt::format("{} has no prompt yet: it may be busy with another session; waiting",
                        nameOf(address_)));
      told = true;
    }
    if (receive(100ms) == Received::kEnd) {
      throw ReportError(fmt::format(
          "{}: closes the connection before its prompt: it may not let this machine in", nameOf(address_)));
    }
  }
}

bool ConsoleClient::awaitPrompt() {
  constexpr int kSilencesOfCommand = 10;
  const auto began = std::chrono::steady_clock::now();
  auto heard = began;
  while (!hasPrompt()) {
    const Received received = receive(100ms);
    const auto now = std::chrono::steady_clock::now();
    heard = received == Received::kSome ? now : heard;
    if (received == Received::kEnd || now - heard > limits_.silent ||
        now - began > kSilencesOfCommand * limits_.silent) {
      return false;
    }
  }
  return true;
}

bool ConsoleClient::typeAndRead(const std::string& command) {
  received_.clear();
  return sendAll(socket_, command + "\r\n") && awaitPrompt();
}

std::string ConsoleClient::ask(const std::string& command) {
  for (int lost = 0; lost < kSessions; lost++) {
    if (socket_ < 0) {
      connect();
    }
    if (typeAndRead(command)) {
      std::string_view reply = received_;
      reply.remove_suffix(kPrompt.size());
      reply.remove_prefix(std::min(reply.size(), reply.find('\n') + 1));  // the echo
      return std::string(reply);
    }
    disconnect();
    tell_(fmt::format("the session is lost at \"{}\"", command));
  }
  throw ReportError(fmt::format("{}: lost {} sessions at \"{}\"", nameOf(address_), kSessions, command));
}

}  // namespace gfast::report
