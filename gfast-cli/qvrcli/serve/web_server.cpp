#include "qvrcli/serve/web_server.h"

#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <system_error>
#include <thread>
#include <utility>

#include "clock/clock.h"
#include "qvrcli/serve/connection.h"

namespace gfast::console {

namespace {

// Set while an accepted connection is to be closed only, because there are enough.
thread_local bool refused = false;

// That are served now. They outlive the server's queue, which goes when nothing can be accepted any more.
std::atomic<size_t> connections{0};

// A thread for each connection. There is no queue: a peer that waits is one that the kernel has not accepted.
class Threads : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> task) override {
    if (connections >= kMostConnections) {
      refuse(task);
      return;
    }
    connections++;
    try {
      std::thread([task] {
        task();
        connections--;
      }).detach();
    } catch (const std::system_error&) {  // no thread is to be had
      connections--;
      refuse(task);
    }
  }

  void shutdown() override {}

 private:
  static void refuse(const std::function<void()>& task) {
    refused = true;
    task();
    refused = false;
  }
};

constexpr std::chrono::seconds kPauseAfterFailedAccept{1};

const char* const kBadRequest = "HTTP/1.1 400 Bad Request\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";

}  // namespace

class WebServer::Http : public httplib::Server {
 public:
  Http(WebHandler handler, Admission admits) : handler_(std::move(handler)), admits_(std::move(admits)) {
    new_task_queue = [] { return new Threads; };
    set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
      answer(request, response);
      return HandlerResponse::Handled;
    });
    set_default_headers(
        {{"Cache-Control", "no-store"},
         {"X-Content-Type-Options", "nosniff"},
         {"Content-Security-Policy", "default-src 'self' 'unsafe-inline' data:; frame-ancestors 'none'"}});
  }

 private:
  void answer(const httplib::Request& request, httplib::Response& response) {
    if (request.method != "GET") {
      response.status = 405;
      response.set_header("Allow", "GET");
      return;
    }
    const WebAnswer answer = handler_(request.path);
    response.status = answer.status;
    response.set_content(answer.body, answer.type.c_str());
  }

  void serve(int socket) {
    Connection connection(socket);
    if (!connection.readHead()) {
      connection.writeAll(kBadRequest);
      return;
    }
    bool closed = false;
    process_request(connection, true, closed, nullptr);
  }

  // An answer is lost when bytes of the request that nobody has read are still there as the socket is closed.
  static void close(int socket) {
    ::shutdown(socket, SHUT_WR);
    char rest[4096];
    while (recv(socket, rest, sizeof rest, MSG_DONTWAIT) > 0) {
    }
    ::close(socket);
  }

  bool process_and_close_socket(socket_t socket) override {
    if (!refused && admits_(socket)) {
      try {
        serve(socket);
      } catch (const std::exception&) {  // no memory, say: this answer is lost, and nothing else
      }
    }
    close(socket);
    return true;
  }

  WebHandler handler_;
  Admission admits_;
};

WebServer::WebServer(WebHandler handler, Admission admits)
    : http_(std::make_unique<Http>(std::move(handler), std::move(admits))) {}

WebServer::~WebServer() = default;

int WebServer::bind(const std::string& address, int port) {
  address_ = address;
  if (port == 0) {
    port_ = http_->bind_to_any_port(address);
  } else {
    port_ = http_->bind_to_port(address, port) ? port : -1;
  }
  return port_;
}

void WebServer::run() {
  for (;;) {
    http_->listen_after_bind();
    clockSource().sleep(kPauseAfterFailedAccept);
    http_->bind_to_port(address_, port_);
  }
}

}  // namespace gfast::console
