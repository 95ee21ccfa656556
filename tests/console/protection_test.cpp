// What the environment keeps users of the console from, through the real program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "console/programs.h"
#include "support/vocabulary.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr uint32_t kOtherAddress = 0x7F000002;
constexpr const char* kReadOnly = "Refused: this console is read-only\r\n";

TEST(Protection, ListensAtOneAddress) {
  setenv("GFAST_LISTEN", "127.0.0.2", 1);
  LabServer lab;
  EXPECT_THROW(ConsoleSession{lab.port()}, std::runtime_error) << "127.0.0.1 is another address";
  setenv("GFAST_LISTEN", "127.0.0.1", 1);
  LabServer other;
  OpenSession session(other.port());
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST(Protection, ListensAtTheAddressesPort) {
  setenv("GFAST_LISTEN", "127.0.0.1:9217", 1);
  LabServer lab;
  EXPECT_EQ(lab.port(), 9217);
  OpenSession session(9217);
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST(Protection, ReportsAnAddressOfAnotherMachine) {
  setenv("GFAST_LISTEN", "192.0.2.1", 1);
  ConsoleProgram program = lab({"--port", "0"});
  EXPECT_NE(program.wait(), 0);
  EXPECT_EQ(program.errors(), "bind: Cannot assign requested address\n");
}

TEST(Protection, ClosesOtherClientsAtOnceAlsoWhileASessionIsServed) {
  setenv("GFAST_ALLOW", "10.0.0.0/8,127.0.0.1", 1);
  LabServer lab;
  OpenSession session(lab.port());
  for (int i = 1; i <= 60; i++) {
    ConsoleSession refused(lab.port(), kOtherAddress);
    EXPECT_EQ(refused.readToEnd(), "");
    EXPECT_THAT(lab.program().awaitOutput(" * refused connection from 127.0.0.2\n", i), HasSubstr("refused"));
  }
  ConsoleSession next(lab.port());
  EXPECT_EQ(session.type("show version"), kVersion);
  session.send("quit\r");
  next.awaitPrompt();
  EXPECT_EQ(next.type("show version"), kVersion);
}

TEST(Protection, KeepsTheFilesOfASessionInOneFolder) {
  const TemporaryFolder inside;
  const TemporaryFolder outside;
  const std::string secret = outside.write("secret.txt", "show version\n");
  inside.write("own.txt", "show version\n");
  ASSERT_EQ(symlink(secret.c_str(), inside.file("link").c_str()), 0);
  ASSERT_EQ(symlink(outside.path().c_str(), inside.file("folder").c_str()), 0);
  setenv("GFAST_FILES", inside.path().c_str(), 1);
  LabServer lab;
  OpenSession session(lab.port());
  EXPECT_EQ(session.type("run own.txt"), kVersion);
  const std::string above = "../" + outside.path().substr(outside.path().rfind('/') + 1);
  for (const std::string& name : {secret, std::string("link"), std::string("folder/secret.txt"),
                                  above + "/secret.txt", std::string("/etc/passwd")}) {
    EXPECT_EQ(session.type("run " + name), "Unable to open file [" + name + "]\r\n");
    EXPECT_EQ(session.type("show SNRps 0 us " + name), "Could not open file " + name + "\r\n");
    EXPECT_EQ(session.type("analyze crashdump 1 " + name),
              "Failed loading device information from file " + name + "\r\n");
    EXPECT_THAT(session.type("generate signal " + name), HasSubstr("Failed writing file " + name));
    EXPECT_EQ(session.type("test afe-loop 0 1 " + name), "Failed to load signal from file " + name + "\r\n");
  }
  EXPECT_EQ(outside.read("secret.txt"), "show version\n");
  EXPECT_EQ(session.type("generate signal"), "");
  EXPECT_TRUE(inside.has("txsignal.dat"));
  EXPECT_EQ(session.type("show SNRps 0 us snr.txt"), "");
  EXPECT_TRUE(inside.has("snr.txt"));
}

// The script on the command line is the administrator's; what it names is kept inside.
TEST(Protection, HoldsInAScriptAsWell) {
  const TemporaryFolder inside;
  const TemporaryFolder outside;
  outside.write("b.txt", "show version\n");
  const std::string script = outside.write("a.txt", "run " + outside.file("b.txt") + "\nreboot\n");
  setenv("GFAST_FILES", inside.path().c_str(), 1);
  setenv("GFAST_READ_ONLY", "1", 1);
  ConsoleProgram program = lab({script});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(),
            "Unable to open file [" + outside.file("b.txt") + "]\nRefused: this console is read-only\n");
}

TEST(Protection, DoesNotServeWithASettingThatItDoesNotUnderstand) {
  const TemporaryFolder folder;
  const std::string missing = folder.file("missing");
  struct Setting {
    const char* name;
    std::string value;
    std::string line;
  };
  for (const Setting& setting :
       {Setting{"GFAST_LISTEN", "lab", "must be an IPv4 address, or one with a port like 127.0.0.1:9000"},
        Setting{"GFAST_ALLOW", "lab", "must list IPv4 addresses and networks, like 192.0.2.7,10.0.0.0/8"},
        Setting{"GFAST_FILES", missing, "No such file or directory"},
        Setting{"GFAST_READ_ONLY", "on", "must be 1 or 0"}}) {
    setenv(setting.name, setting.value.c_str(), 1);
    ConsoleProgram program = lab({"--port", "0"});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(), setting.name + ("=" + setting.value) + ": " + setting.line + "\n");
    unsetenv(setting.name);
  }
}

// What the driver was asked, without what only reads.
std::set<std::string> changesIn(const std::string& traceFile) {
  std::set<std::string> changes;
  std::ifstream trace(traceFile);
  for (std::string line; std::getline(trace, line);) {
    bool reads = false;
    for (const char* const request : {" open ", " memread ", " logread ", " eventread ", " farend "}) {
      reads = reads || line.find(request) != std::string::npos;
    }
    if (!reads) {
      changes.insert(line);
    }
  }
  return changes;
}

// Words that every command takes: a line, a number, a name; whatever is refused makes no request.
const std::vector<std::string> kArguments = {
    "",         " 0",        " 1",    " all",      " 0 us",  " 0 ds",
    " 0 ne",    " 0 fe",     " 0 1",  " 0 us out", " 0 out", " 0 e0000000 8",
    " 0 1 out", " 0 0 4 12", " B1 0", " 1 in out", " 0 a b", " 0 d0000000 4 12345678"};

TEST(Protection, LetsNothingThroughThatChangesAChipOrAFile) {
  const TemporaryFolder folder;
  const std::string trace = folder.file("trace.txt");
  const TemporaryFolder working;
  setenv("GFAST_READ_ONLY", "1", 1);
  ConsoleProgram program(LAUNCHER,
                         {gfastLab(), "--board", quietBoard(), "--trace-requests", trace, "--port", "0"},
                         working.path());
  OpenSession session(program.port());
  const std::set<std::string> atStart = changesIn(trace);
  int refused = 0;
  for (const int mode : {MODE_EXEC, MODE_CONFIG}) {
    for (const VocabularyRow& row : kVocabulary) {
      const std::string path = row.path;
      if (row.mode == mode && row.help != nullptr && path != "sleep") {
        for (const std::string& arguments : kArguments) {
          refused += session.type(path + arguments) == kReadOnly ? 1 : 0;
        }
      }
    }
    session.type("configure");
  }
  EXPECT_GE(refused, 35);
  EXPECT_EQ(changesIn(trace), atStart);
  EXPECT_TRUE(std::filesystem::is_empty(working.path()));
}

TEST(Protection, IsOffWithoutAnEnvironment) {
  const TemporaryFolder folder;
  LabServer lab(folder.path());
  ConsoleSession other(lab.port(), kOtherAddress);
  other.awaitPrompt();
  EXPECT_EQ(other.type("write memory 0 d0000000 4 12345678"), "");
  EXPECT_EQ(other.type("show SNRps 0 us " + folder.file("snr.txt")), "");
  EXPECT_TRUE(folder.has("snr.txt"));
  EXPECT_THAT(lab.program().output(), Not(HasSubstr("refused")));
}

}  // namespace
