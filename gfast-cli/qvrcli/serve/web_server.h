// HTTP for a few readers, within bounds: cpp-httplib's server, with connections, request sizes and times that
// a hostile peer cannot stretch.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace gfast::console {

constexpr size_t kMostConnections = 16;      // at once; one more is closed as soon as it is accepted
constexpr size_t kLongestHead = 8192;        // bytes of a request up to its empty line
constexpr size_t kLongestRequestLine = 512;  // bytes
constexpr int kTimeForRequest_ms = 5000;     // to send its head, and as long to take each part of the answer
constexpr int kTimeForAnswer_ms = 30000;     // to take all of it

struct WebAnswer {
  int status = 404;
  std::string type = "text/plain; charset=utf-8";
  std::string body;
};

// Whether the client of a connection is served.
using Admission = std::function<bool(int connection)>;

// Answers a GET of a path, on one of the server's threads, which runs several at the same time.
using WebHandler = std::function<WebAnswer(const std::string& path)>;

class WebServer {
 public:
  WebServer(WebHandler handler, Admission admits);
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  // The port that it is bound to, or -1.
  int bind(const std::string& address, int port);

  // Serves until the process ends, also after the system refused to accept a connection.
  void run();

 private:
  class Http;
  std::string address_;
  int port_ = -1;
  std::unique_ptr<Http> http_;
};

}  // namespace gfast::console
