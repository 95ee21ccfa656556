// What other machines read over HTTP, and what that must not change for who types.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "console/programs.h"

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A connection to a port of this machine.
class Peer {
 public:
  explicit Peer(uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    const timeval patience{.tv_sec = 30, .tv_usec = 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  ~Peer() { ::close(socket_); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  void send(const std::string& bytes) { ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL); }

  std::string readToEnd() {
    std::string all;
    char piece[4096];
    for (ssize_t count = 0; (count = recv(socket_, piece, sizeof piece, 0)) > 0;) {
      all.append(piece, static_cast<size_t>(count));
    }
    return all;
  }

 private:
  int socket_;
};

// A lab that serves, with a session open.
class Serve : public testing::Test {
 protected:
  void start(const std::string& board, std::vector<std::string> more = {}) {
    std::vector<std::string> command{gfastLab(), "--board", folder_.write("board.toml", board), "--port", "0",
                                     "--http",   "0"};
    command.insert(command.end(), more.begin(), more.end());
    program_ = std::make_unique<ConsoleProgram>(LAUNCHER, command, folder_.path());
    const std::string beginning = "Serving http://127.0.0.1:";
    program_->awaitOutput("Listening on port ");
    const std::string& printed = program_->output();
    port_ = static_cast<uint16_t>(std::stoi(printed.substr(printed.find(beginning) + beginning.size())));
  }

  std::string ask(const std::string& request) {
    Peer peer(port_);
    peer.send(request);
    return peer.readToEnd();
  }

  std::string get(const std::string& path) { return ask("GET " + path + " HTTP/1.1\r\nHost: x\r\n\r\n"); }

  uint16_t port() const { return port_; }
  ConsoleProgram& program() { return *program_; }
  const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
  std::unique_ptr<ConsoleProgram> program_;
  uint16_t port_ = 0;
};

// The whole number behind a label, such as "SNRMds", in what a command printed.
std::string shown(const std::string& printed, const std::string& label) {
  const size_t line = printed.find("\n" + label + " ") + 1;
  const size_t end = printed.find('\r', line);
  const size_t last = printed.find_last_of(' ', end);
  return printed.substr(last + 1, end - last - 1);
}

TEST_F(Serve, TellsWhatTheConsoleShows) {
  start(boardWithLines("showtime"));
  OpenSession session(program().port());
  const std::string lines = get("/data/lines.json");
  EXPECT_THAT(lines, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(lines, HasSubstr("application/json"));
  EXPECT_THAT(lines, HasSubstr("\"oper-status\":\"up\""));
  const std::string status = "\n" + session.type("show line status 0");
  EXPECT_THAT(lines, HasSubstr("\"downstream\":{\"snr-margin\":" + shown(status, "SNRMds")));
  const std::string channel = "\n" + session.type("show channel status 0 ds");
  EXPECT_THAT(lines, HasSubstr("\"net-data-rate\":" + shown(channel, "NDR")));
  EXPECT_THAT(get("/metrics"), HasSubstr("dsl_data_rate_bps{line=\"0\",direction=\"downstream\"} " +
                                         shown(channel, "NDR") + "000\n"));
}

TEST_F(Serve, ClosesClientsThatMayNotUseTheConsole) {
  setenv("GFAST_ALLOW", "10.0.0.0/8", 1);
  start(boardWithLines("idle"));
  EXPECT_EQ(get("/metrics"), "");
  EXPECT_THAT(program().awaitOutput("refused connection"),
              HasSubstr(" * refused connection from 127.0.0.1\n"));
}

TEST_F(Serve, AnswersClientsThatMayUseTheConsole) {
  setenv("GFAST_ALLOW", "10.0.0.0/8 127.0.0.1", 1);
  start(boardWithLines("idle"));
  EXPECT_THAT(get("/metrics"), StartsWith("HTTP/1.1 200 OK"));
}

TEST_F(Serve, HasNoFiguresOfALineThatIsDown) {
  start(boardWithLines("idle"));
  const std::string lines = get("/data/lines.json");
  EXPECT_THAT(lines, HasSubstr("\"oper-status\":\"down\""));
  EXPECT_THAT(lines, HasSubstr("\"snr-margin\":\"undetermined\""));
  EXPECT_THAT(lines, Not(HasSubstr("-51")));
  const std::string metrics = get("/metrics");
  EXPECT_THAT(metrics, HasSubstr("dsl_up{line=\"0\"} 0\n"));
  EXPECT_THAT(metrics, Not(HasSubstr("\ndsl_snr_margin_db{")));
}

TEST_F(Serve, HasTheTonesOfALineThatIsUp) {
  start(boardWithLines("showtime"));
  const std::string line = get("/data/lines/0.json");
  EXPECT_THAT(line, HasSubstr("\"snrps\":"));
  EXPECT_THAT(line, HasSubstr("\"hlogps\":"));
  EXPECT_THAT(line, HasSubstr("\"bitsps\":"));
  EXPECT_THAT(line, HasSubstr("\"alnps\":"));
  EXPECT_THAT(get("/metrics"), HasSubstr("\ndsl_signal_attenuation_db{line=\"0\",direction=\"upstream\"} "));
}

// Lines of a request trace, without those of the notification thread.
std::vector<std::string> requestsIn(const std::string& file) {
  std::vector<std::string> requests;
  std::ifstream trace(file);
  for (std::string line; std::getline(trace, line);) {
    if (line.find(" eventread ") == std::string::npos && line.find(" logread ") == std::string::npos) {
      requests.push_back(line.substr(line.find(' ') + 1));
    }
  }
  return requests;
}

TEST_F(Serve, AsksTheChipsOnceForAnyNumberOfReaders) {
  const std::string trace = folder().file("trace.txt");
  start(boardWithLines("showtime"), {"--trace-requests", trace});
  const size_t atStart = requestsIn(trace).size();
  get("/metrics");
  const size_t afterOne = requestsIn(trace).size();
  std::vector<std::thread> readers;
  for (int i = 0; i < 8; i++) {
    readers.emplace_back([this] { EXPECT_THAT(get("/metrics"), HasSubstr("\ngfast_readings_total 1\n")); });
  }
  for (std::thread& reader : readers) {
    reader.join();
  }
  EXPECT_GT(afterOne, atStart);
  // The tones for the attenuation follow the first reading.
  for (const std::string& request : requestsIn(trace)) {
    EXPECT_THAT(request, Not(HasSubstr(" memwrite "))) << "a reading writes nothing";
  }
}

TEST_F(Serve, WritesNothingAndOpensNothing) {
  const std::string trace = folder().file("trace.txt");
  start(boardWithLines("showtime"), {"--trace-requests", trace});
  const size_t atStart = requestsIn(trace).size();
  get("/data/lines/0.json");
  const std::vector<std::string> requests = requestsIn(trace);
  ASSERT_GT(requests.size(), atStart + 100);
  for (size_t i = atStart; i < requests.size(); i++) {
    EXPECT_TRUE(requests[i].find(" memread ") != std::string::npos ||
                requests[i].find(" farend ") != std::string::npos)
        << requests[i];
  }
}

// A script prints the same, line for line, while readers ask as much as they can.
TEST_F(Serve, ChangesNothingOfWhatCommandsPrint) {
  std::string commands;
  for (const std::string command :
       {"show line status", "show inventory", "show number devices", "show SNRps 0 us", "show BITSps 0 ds",
        "show HLOGps 0 us", "show ALNps 0 ds", "show phy-info 0", "show SATN 0 ds"}) {
    commands += command + "\n";
  }
  start(boardWithLines("showtime"));
  folder().write("script.txt", commands);
  OpenSession session(program().port());
  const std::string alone = session.type("run script.txt 3");
  std::atomic<bool> end{false};
  std::thread reader([&] {
    while (!end) {
      get("/data/lines/0.json");
    }
  });
  const std::string beside = session.type("run script.txt 3");
  std::this_thread::sleep_for(100ms);
  end = true;
  reader.join();
  EXPECT_EQ(beside, alone);
  EXPECT_THAT(program().output(), Not(HasSubstr("[LOG_")));
}

TEST_F(Serve, ReadsWhileACommandSleeps) {
  start(boardWithLines("showtime"));
  get("/metrics");
  OpenSession session(program().port());
  session.send("sleep 20\r");
  std::this_thread::sleep_for(6s);  // until the reading is old
  EXPECT_THAT(get("/metrics"), HasSubstr("\ngfast_readings_total 2\n")) << "who sleeps is not in the way";
}

TEST_F(Serve, KnowsItsPages) {
  start(boardWithLines("showtime"));
  for (const char* const path :
       {"/data/lines/2.json", "/data/lines/-1.json", "/data/lines/.json", "/data", "/data/lines/0.json/",
        "/data/lines/99999999999.json", "/../etc/passwd", "/%00", "/data/lines.jso"}) {
    EXPECT_THAT(get(path), StartsWith("HTTP/1.1 404 ")) << path;
  }
}

TEST_F(Serve, IsForReadingOnly) {
  start(boardWithLines("idle"));
  for (const std::string method : {"POST", "PUT", "DELETE", "HEAD", "OPTIONS", "PATCH"}) {
    const std::string answer = ask(method + " /metrics HTTP/1.1\r\nContent-Length: 4\r\n\r\nbody");
    EXPECT_THAT(answer, testing::ContainsRegex("^HTTP/1.1 (405|400) ")) << method;
  }
}

TEST_F(Serve, OutlivesHostilePeers) {
  start(boardWithLines("idle"));
  const std::string line = "GET /metrics HTTP/1.1\r\n";
  EXPECT_THAT(ask("\r\n\r\n"), StartsWith("HTTP/1.1 400 "));
  EXPECT_THAT(ask(std::string(3, '\0') + "\r\n\r\n"), StartsWith("HTTP/1.1 400 "));
  EXPECT_THAT(ask("GET /" + std::string(600, 'a') + " HTTP/1.1\r\n\r\n"), StartsWith("HTTP/1.1 400 "));
  ask(line + "X: " + std::string(100000, 'x') + "\r\n\r\n");
  ask(line + std::string(100000, 'x'));
  for (const char* const header :
       {"Range: bytes=0-0,0-0,0-0,0-0,0-0,0-0", "Range: bytes=-", "Content-Length: -1",
        "Content-Length: 99999999999999999999", "Transfer-Encoding: chunked", "Expect: 100-continue",
        "Connection: Upgrade, HTTP2-Settings", "Accept-Encoding: gzip, br"}) {
    EXPECT_THAT(ask(line + header + "\r\n\r\n"), StartsWith("HTTP/1.1 200 ")) << header;
  }
  std::string ranges = "Range: bytes=0-0";
  while (ranges.size() < 8000) {
    ranges += ",0-0";
  }
  EXPECT_THAT(ask(line + ranges + "\r\n\r\n"), StartsWith("HTTP/1.1 200 "));
  for (int i = 0; i < 40; i++) {
    Peer(port()).send("GET /data/lines.json HT");
  }
  // While it has not seen that these have gone, one more is closed.
  std::string answer;
  for (int i = 0; i < 100 && answer.empty(); i++) {
    std::this_thread::sleep_for(50ms);
    answer = get("/metrics");
  }
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
  EXPECT_TRUE(program().running());
}

TEST_F(Serve, ClosesWhatIsTooMuchAndWhatIsTooSlow) {
  start(boardWithLines("idle"));
  std::vector<std::unique_ptr<Peer>> silent;
  for (int i = 0; i < 16; i++) {
    silent.push_back(std::make_unique<Peer>(port()));
    silent.back()->send("GET ");
  }
  std::this_thread::sleep_for(200ms);
  EXPECT_EQ(Peer(port()).readToEnd(), "") << "one more is closed";
  const auto began = std::chrono::steady_clock::now();
  for (const auto& peer : silent) {
    EXPECT_THAT(peer->readToEnd(), StartsWith("HTTP/1.1 400 "));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - began, 15s);
  EXPECT_THAT(get("/metrics"), StartsWith("HTTP/1.1 200 "));
}

bool hasIpv6() {
  sockaddr_in6 own{};
  own.sin6_family = AF_INET6;
  own.sin6_addr = in6addr_loopback;
  const int tried = ::socket(AF_INET6, SOCK_STREAM, 0);
  const bool bound = bind(tried, reinterpret_cast<sockaddr*>(&own), sizeof own) == 0;
  ::close(tried);
  return bound;
}

TEST(ServeAddress, MayBeOfIpv6InBrackets) {
  if (!hasIpv6()) {
    GTEST_SKIP() << "this machine has no IPv6";
  }
  ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", quietBoard(), "--port", "0", "--http", "[::1]:0"});
  EXPECT_THAT(program.awaitOutput("Listening on port "), HasSubstr("Serving http://[::1]:"));
}

TEST(ServeAddress, IsRefusedInOneLine) {
  for (const std::string where : {"x", "70000", "-1", ":80", "127.0.0.1:", "127.0.0.1:x", "1.2.3.4.5:80"}) {
    ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", quietBoard(), "--port", "0", "--http", where});
    EXPECT_EQ(program.wait(), 1) << where;
    EXPECT_EQ(std::count(program.errors().begin(), program.errors().end(), '\n'), 1) << program.errors();
  }
}

}  // namespace
