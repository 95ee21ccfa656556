// The console behind ssh, as docs/console.md shows it: an ssh server on this machine stands for the board's.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "console/programs.h"

namespace {

constexpr const char* kSshd = "/usr/sbin/sshd";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t found = text.find(from);
  EXPECT_NE(found, std::string::npos) << from << " in " << text;
  return text.replace(found, from.size(), to);
}

// The ssh command in the manual.
std::string documentedCommand() {
  std::ifstream manual(CONSOLE_MANUAL);
  for (std::string line; std::getline(manual, line);) {
    if (const size_t start = line.find_first_not_of(' ');
        start == 4 && line.substr(start).starts_with("ssh ")) {
      return line.substr(start);
    }
  }
  throw std::runtime_error("the manual has no line that begins with ssh");
}

std::string user() {
  const passwd* const entry = getpwuid(getuid());
  return entry == nullptr ? "root" : entry->pw_name;
}

uint16_t freePort() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int any = socket(AF_INET, SOCK_STREAM, 0);
  socklen_t length = sizeof address;
  EXPECT_EQ(bind(any, reinterpret_cast<sockaddr*>(&address), length), 0);
  getsockname(any, reinterpret_cast<sockaddr*>(&address), &length);
  close(any);
  return ntohs(address.sin_port);
}

// What `connect` returns as soon as somebody listens.
template <typename Connect>
auto whenReady(Connect connect) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    try {
      return connect();
    } catch (const std::runtime_error&) {
      if (std::chrono::steady_clock::now() > end) {
        throw;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
}

// An ssh server of the test's own: its keys, its port, its list of who may come in.
class Ssh : public testing::Test {
 protected:
  void SetUp() override {
    if (access(kSshd, X_OK) != 0) {
      GTEST_SKIP() << "openssh-server is not installed";
    }
    for (const char* const key : {"host", "own"}) {
      ConsoleProgram keygen("", {"ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder_.file(key)});
      ASSERT_EQ(keygen.wait(), 0) << keygen.errors();
    }
    authorize("own.pub");
    serverPort_ = freePort();
    mkdir("/run/sshd", 0755);  // as root, sshd wants it; it need not have been started on this machine
    const std::string config = folder_.write(
        "sshd_config", "ListenAddress 127.0.0.1\nPort " + std::to_string(serverPort_) + "\nHostKey " +
                           folder_.file("host") + "\nAuthorizedKeysFile " + folder_.file("authorized_keys") +
                           "\nStrictModes no\nUsePAM no\nPidFile none\nPermitRootLogin yes\n"
                           "PasswordAuthentication no\nKbdInteractiveAuthentication no\n");
    server_ = std::make_unique<ConsoleProgram>("", std::vector<std::string>{kSshd, "-D", "-e", "-f", config});
    whenReady([this] { return std::make_unique<ConsoleSession>(serverPort_); });
    known_ =
        folder_.write("known", "[127.0.0.1]:" + std::to_string(serverPort_) + " " + folder_.read("host.pub"));
  }

  // As the manual has it: a key for nothing but forwarding.
  void authorize(const std::string& key) const {
    folder_.write("authorized_keys", "restrict,port-forwarding " + folder_.read(key));
  }

  // The documented command, with this server for the board and other ports.
  std::vector<std::string> command(uint16_t local, uint16_t console) const {
    const std::string line =
        replaced(replaced(replaced(documentedCommand(), "9000:", std::to_string(local) + ":"), ":9000",
                          ":" + std::to_string(console)),
                 "USER@BOARD", user() + "@127.0.0.1");
    std::vector<std::string> words = {"ssh",
                                      "-F",
                                      "none",
                                      "-i",
                                      folder_.file("own"),
                                      "-p",
                                      std::to_string(serverPort_),
                                      "-o",
                                      "UserKnownHostsFile=" + known_,
                                      "-o",
                                      "BatchMode=yes",
                                      "-o",
                                      "ExitOnForwardFailure=yes"};
    std::istringstream stream(line.substr(line.find(' ')));
    for (std::string word; stream >> word;) {
      words.push_back(word);
    }
    return words;
  }

  TemporaryFolder folder_;
  uint16_t serverPort_ = 0;
  std::string known_;
  std::unique_ptr<ConsoleProgram> server_;
};

TEST_F(Ssh, CarriesSessionsToAConsoleThatListensOnItsOwnMachineOnly) {
  setenv("GFAST_LISTEN", "127.0.0.1", 1);
  LabServer lab;
  const uint16_t local = freePort();
  ConsoleProgram tunnel("", command(local, lab.port()));
  const auto session = whenReady([local] { return std::make_unique<OpenSession>(local); });
  EXPECT_EQ(session->type("show version"), kVersion);
}

TEST_F(Ssh, LetsNobodyInWithoutTheKey) {
  authorize("host.pub");
  ConsoleProgram tunnel("", command(freePort(), freePort()));
  EXPECT_NE(tunnel.wait(), 0);
  EXPECT_NE(tunnel.errors().find("Permission denied"), std::string::npos) << tunnel.errors();
}

}  // namespace
