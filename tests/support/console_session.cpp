#include "support/console_session.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::runtime_error systemError(const std::string& what) {
  return std::runtime_error(what + ": " + std::generic_category().message(errno));
}

milliseconds leftUntil(Clock::time_point end) {
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(end - Clock::now()));
}

// The end of the text's `times`-th occurrence, or npos.
size_t endOf(const std::string& where, std::string_view text, int times) {
  size_t end = 0;
  for (int i = 0; i < times; i++) {
    const size_t found = where.find(text, end);
    if (found == std::string::npos) {
      return found;
    }
    end = found + text.size();
  }
  return end;
}

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> result;
  for (std::string word; stream >> word;) {
    result.push_back(word);
  }
  return result;
}

[[noreturn]] void execute(const std::vector<std::string>& command, const std::string& directory, int output,
                          int errors) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& word : command) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  dup2(output, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  if (chdir(directory.c_str()) == 0) {
    execvp(arguments[0], arguments.data());
  }
  std::perror(arguments[0]);
  _exit(127);
}

// Asks first: a program that may end by itself can write what it counts for tools/coverage.
void endProcess(pid_t pid) {
  kill(pid, SIGTERM);
  const auto end = Clock::now() + std::chrono::seconds(5);
  while (waitpid(pid, nullptr, WNOHANG) == 0) {
    if (Clock::now() > end) {
      kill(pid, SIGKILL);
    }
    usleep(500);
  }
}

}  // namespace

ConsoleProgram::ConsoleProgram(const std::string& launcher, const std::vector<std::string>& command,
                               const std::string& directory) {
  std::vector<std::string> all = words(launcher);
  all.insert(all.end(), command.begin(), command.end());
  int output[2];
  int errors[2];
  if (pipe2(output, O_CLOEXEC) < 0 || pipe2(errors, O_CLOEXEC) < 0) {
    throw systemError("pipe2");
  }
  pid_ = fork();
  if (pid_ < 0) {
    throw systemError("fork");
  }
  if (pid_ == 0) {
    execute(all, directory, output[1], errors[1]);
  }
  ::close(output[1]);
  ::close(errors[1]);
  outputPipe_ = output[0];
  errorPipe_ = errors[0];
}

ConsoleProgram::~ConsoleProgram() {
  if (pid_ > 0) {
    endProcess(pid_);
  }
  ::close(outputPipe_);
  ::close(errorPipe_);
}

// False when both streams have ended or nothing came in time.
bool ConsoleProgram::readSome(milliseconds patience) {
  pollfd streams[] = {{outputPipe_, POLLIN, 0}, {errorPipe_, POLLIN, 0}};
  if (poll(streams, 2, static_cast<int>(patience.count())) <= 0) {
    return false;
  }
  bool any = false;
  char buffer[4096];
  std::string* const texts[] = {&output_, &errors_};
  for (int i = 0; i < 2; i++) {
    if (streams[i].revents != 0) {
      const ssize_t count = read(streams[i].fd, buffer, sizeof buffer);
      if (count > 0) {
        texts[i]->append(buffer, static_cast<size_t>(count));
        any = true;
      } else {
        int& pipe = i == 0 ? outputPipe_ : errorPipe_;
        ::close(pipe);
        pipe = -1;  // poll passes over it
        any = any || outputPipe_ >= 0 || errorPipe_ >= 0;
      }
    }
  }
  return any;
}

const std::string& ConsoleProgram::awaitOutput(std::string_view text, int times) {
  const auto end = Clock::now() + kPatience;
  while (endOf(output_, text, times) == std::string::npos && readSome(leftUntil(end))) {
  }
  return output_;
}

const std::string& ConsoleProgram::output() {
  while (readSome(milliseconds(0))) {
  }
  return output_;
}

uint16_t ConsoleProgram::port() {
  constexpr std::string_view announcement = "Listening on port ";
  const std::string& printed = awaitOutput(announcement);
  const size_t number = endOf(printed, announcement, 1);
  if (number == std::string::npos) {
    throw std::runtime_error("the program does not listen: " + printed + errors_);
  }
  awaitOutput("\n", 1 + static_cast<int>(std::count(printed.begin(),
                                                    printed.begin() + static_cast<ptrdiff_t>(number), '\n')));
  return static_cast<uint16_t>(std::stoi(printed.substr(number)));
}

int ConsoleProgram::wait() {
  const auto end = Clock::now() + kPatience;
  while (outputPipe_ >= 0 || errorPipe_ >= 0) {
    if (!readSome(leftUntil(end)) && leftUntil(end).count() == 0) {
      throw std::runtime_error("the program does not end; it printed: " + output_);
    }
  }
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool ConsoleProgram::running() {
  return pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0;
}

ConsoleSession::ConsoleSession(uint16_t port, uint32_t from)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(from);
  if (bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) < 0) {
    throw systemError("bind");
  }
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) < 0) {
    throw systemError("connect");
  }
}

ConsoleSession::~ConsoleSession() {
  close();
}

void ConsoleSession::close() {
  if (socket_ >= 0) {
    ::close(socket_);
    socket_ = -1;
  }
}

void ConsoleSession::reset() {
  const linger atOnce{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  close();
}

void ConsoleSession::endInput() {
  shutdown(socket_, SHUT_WR);
}

void ConsoleSession::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) {
      throw systemError("send");
    }
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
}

bool ConsoleSession::receiveSome(milliseconds patience) {
  constexpr char telnetCommand = '\xFF';
  pollfd peer{socket_, POLLIN, 0};
  if (ended_ || poll(&peer, 1, static_cast<int>(patience.count())) <= 0) {
    return false;
  }
  char buffer[65536];
  const ssize_t count = recv(socket_, buffer, sizeof buffer, 0);
  ended_ = count <= 0;
  std::string_view rest(buffer, ended_ ? 0 : static_cast<size_t>(count));
  while (!rest.empty()) {
    size_t taken = 1;
    if (telnet_ > 0) {
      telnet_--;
    } else if (rest.front() == telnetCommand) {
      telnet_ = 2;
    } else {
      taken = std::min(rest.find(telnetCommand), rest.size());
      received_ += rest.substr(0, taken);
    }
    rest.remove_prefix(taken);
  }
  return !ended_;
}

std::string ConsoleSession::readUntil(std::string_view text) {
  const auto end = Clock::now() + kPatience;
  size_t searched = 0;
  for (;;) {
    const size_t found = received_.find(text, searched);
    if (found != std::string::npos) {
      std::string result = received_.substr(0, found + text.size());
      received_.erase(0, found + text.size());
      return result;
    }
    searched = received_.size() < text.size() ? 0 : received_.size() - text.size() + 1;
    if (!receiveSome(leftUntil(end)) && (ended_ || leftUntil(end).count() == 0)) {
      return std::exchange(received_, {});
    }
  }
}

std::string ConsoleSession::readToEnd() {
  const auto end = Clock::now() + kPatience;
  while (receiveSome(leftUntil(end))) {
  }
  if (!ended_) {
    throw std::runtime_error("the session does not end");
  }
  return std::exchange(received_, {});
}

std::string ConsoleSession::readFor(milliseconds time) {
  const auto end = Clock::now() + time;
  while (receiveSome(leftUntil(end))) {
  }
  return std::exchange(received_, {});
}

void ConsoleSession::awaitPrompt() {
  readUntil(kPrompt);
}

std::string ConsoleSession::type(std::string_view line) {
  const std::string echo = std::string(line) + "\r\n";
  send(std::string(line) + "\r");
  std::string answer = typeKeys("");
  return answer.starts_with(echo) ? answer.substr(echo.size()) : "no echo: " + answer;
}

std::string ConsoleSession::typeKeys(std::string_view keys) {
  send(keys);
  // Either mode's prompt ends in this, and nothing else the console prints does.
  std::string answer = readUntil(")> ");
  for (const std::string_view prompt : {kConfigPrompt, kPrompt}) {
    if (answer.ends_with(prompt)) {
      answer.erase(answer.size() - prompt.size());
      break;
    }
  }
  return answer;
}
