// One accepted connection, within its times.
#pragma once

#include <httplib.h>

#include <chrono>
#include <string>

namespace gfast::console {

// What cpp-httplib reads and writes through. It reads nothing but the request line: no answer depends on
// anything else of a request, and what a peer sends beyond that line never reaches the parsers behind.
class Connection : public httplib::Stream {
 public:
  explicit Connection(int socket);

  // Waits for the request's head and keeps its first line. False when it does not come in time, is longer
  // than allowed, or is no text.
  bool readHead();

  bool is_readable() const override { return !line_.empty(); }
  bool is_writable() const override;
  ssize_t read(char* to, size_t size) override;
  ssize_t write(const char* from, size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  int socket() const override { return socket_; }

  // The whole text, or as much of it as the peer takes in time.
  bool writeAll(const std::string& text);

 private:
  bool waitFor(short events, std::chrono::steady_clock::time_point deadline) const;

  int socket_;
  std::string line_;  // of the request, with the empty line behind it; what cpp-httplib has not read yet
  std::chrono::steady_clock::time_point answerBy_;
};

}  // namespace gfast::console
