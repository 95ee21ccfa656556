// The program, typing at a lab.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <httplib.h>

#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/console_session.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;

struct Ran {
  int status;
  std::string output, errors;
};

Ran report(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), GFAST_REPORT);
  ConsoleProgram program("", arguments);
  const int status = program.wait();
  return {status, program.output(), program.errors()};
}

class Report : public testing::Test {
 protected:
  // A lab in which time passes only while somebody sleeps, some seconds after its start.
  void start(const std::string& board, int seconds) {
    lab_ = std::make_unique<ConsoleProgram>(
        "", std::vector<std::string>{GFAST_LAB, "--board", BOARDS "/" + board, "--speed", "max", "--port",
                                     "0", "--http", "0"});
    port_ = std::to_string(lab_->port());
    pass(seconds);
  }

  void pass(int seconds) {
    ConsoleSession session(lab_->port());
    session.awaitPrompt();
    session.type("sleep " + std::to_string(seconds));
  }

  std::string served(const std::string& path) {
    const std::string beginning = "Serving http://127.0.0.1:";
    const std::string& printed = lab_->output();
    const size_t at = printed.find(beginning) + beginning.size();
    httplib::Client client("127.0.0.1", std::stoi(printed.substr(at)));
    const auto answer = client.Get(path);
    return answer ? answer->body : "";
  }

  uint16_t port() { return lab_->port(); }
  std::string address() const { return "127.0.0.1:" + port_; }
  const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
  std::unique_ptr<ConsoleProgram> lab_;
  std::string port_;
};

// What only the server can know, and what depends on the time of this machine.
void leaveOut(Json& document) {
  Json& interface = document["ietf-interfaces:interfaces-state"]["interface"][0];
  interface.erase("last-change");
  interface.erase("statistics");
  Json& fast = interface["bbf-fastdsl:line"]["bbf-fast:line"];
  for (const char* end : {"ftu-o", "ftu-r"}) {
    fast["inventory"][end].erase("g.994.1-vendor-id");  // has bytes that are not printed
  }
  for (const char* part : {"hlog", "aln"}) {  // whether a group is in use
    fast["status"]["downstream"].erase(part);
    fast["status"]["upstream"].erase(part);
  }
  Json& own = document["gfast-cli-reading:reading"];
  for (const char* key : {"time", "number", "event"}) {
    own.erase(key);
  }
  own["line"][0].erase("quarter-hour");
  own["line"][0].erase("last-failure");
  own["line"][0]["tones"].erase("time");
}

TEST_F(Report, HasWhatTheServerTells) {
  start("line-radio.toml", 1000);
  for (const char* line : {"0", "1"}) {
    const std::string file = folder().file("line.json");
    const Ran ran = report({"--from", address(), "--line", line, "-o", file});
    ASSERT_EQ(ran.status, 0) << ran.errors;
    EXPECT_EQ(ran.errors, "");
    Json typed = Json::parse(folder().read("line.json"));
    Json told = Json::parse(served(std::string("/data/lines/") + line + ".json"));
    leaveOut(typed);
    leaveOut(told);
    EXPECT_EQ(Json::diff(typed, told), Json::array()) << line;
  }
}

TEST_F(Report, WaitsForABusyConsole) {
  start("usual.toml", 20);
  ConsoleSession other(port());
  other.awaitPrompt();
  const Ran ran = report({"--from", address(), "--wait", "1"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.errors, "gfast-report: " + address() + ": still busy after 1 s\n");
  other.close();
  EXPECT_EQ(report({"--from", address()}).status, 0);
}

TEST_F(Report, OfABoardIsThatOfALabBeforeIt) {
  start("faults/bridged-tap.toml", 1000);
  ASSERT_EQ(report({"--from", address(), "--line", "0", "-o", folder().file("typed.json")}).status, 0);
  const std::string board = BOARDS "/faults/bridged-tap.toml";
  const Ran ran = report({"--board", board, "--after", "1000", "-o", folder().file("read.json")});
  EXPECT_EQ(ran.output + ran.errors, "");
  Json typed = Json::parse(folder().read("typed.json"));
  Json read = Json::parse(folder().read("read.json"));
  EXPECT_EQ(read["gfast-cli-reading:reading"]["time"], "2024-01-01T00:16:40Z");
  leaveOut(typed);
  leaveOut(read);
  EXPECT_EQ(Json::diff(typed, read), Json::array());
}

TEST(ReportOfATrace, HasWhatTheTraceHolds) {
  const Ran ran = report({"--replay", FIELD_TRACES "/line-drops.trace"});
  EXPECT_EQ(ran.status, 0) << ran.errors;
  EXPECT_THAT(ran.output, StartsWith("line 0, network side: showtime"));
  EXPECT_THAT(ran.output, HasSubstr("683.0 Mbit/s"));
  EXPECT_THAT(ran.output, HasSubstr("No tone has a value."));
  EXPECT_THAT(ran.errors, testing::MatchesRegex("gfast-report: the trace does not hold [0-9]+ requests\n"));
}

TEST(ReportOfABoard, NeedsTheLineAndAFile) {
  const Ran ran = report({"--board", BOARDS "/one-chip.toml", "--line", "1"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.errors, "gfast-report: there is no line 1: the board has 1\n");
  EXPECT_EQ(report({"--board", "none.toml"}).status, 1);
  EXPECT_EQ(report({"--replay", "none.trace"}).status, 1);
  EXPECT_EQ(report({"--after", "5"}).status, 2);
}

TEST_F(Report, IsATextWithoutAFile) {
  start("faults/bridged-tap.toml", 20);
  const Ran ran = report({"--from", address()});
  EXPECT_EQ(ran.status, 0) << ran.errors;
  EXPECT_THAT(ran.output, StartsWith("line 0, network side: showtime"));
  EXPECT_THAT(ran.output, HasSubstr("* A bridged tap of about 5.0 m"));
}

TEST_F(Report, TellsWhatChanged) {
  start("line-radio.toml", 20);
  const std::string before = folder().file("before.json");
  const std::string after = folder().file("after.json");
  ASSERT_EQ(report({"--from", address(), "-o", before}).status, 0);
  pass(80);
  ASSERT_EQ(report({"--from", address(), "-o", after}).status, 0);
  const Ran ran = report({"--diff", before, after});
  EXPECT_EQ(ran.status, 0) << ran.errors;
  EXPECT_THAT(ran.output, HasSubstr("\nnew: A radio station at 9.6 MHz"));
  EXPECT_THAT(ran.output, HasSubstr("\ndownstream HLOG: as before\n"));
  EXPECT_EQ(report({"--diff", before, "--from", address()}).status, 2);
  EXPECT_EQ(report({"--diff", before, after, "-o", folder().file("x.html")}).status, 2);
  EXPECT_EQ(report({"--diff", before, folder().file("none.json")}).errors,
            "gfast-report: " + folder().file("none.json") + ": No such file or directory\n");
}

struct Example {
  std::string command, output;
};

// The commands behind "$ " in the manual's blocks, and what stands below each.
std::vector<Example> examplesIn(const std::string& manual) {
  std::vector<Example> examples;
  bool inside = false;
  std::istringstream lines(manual);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("```")) {
      inside = line == "```console";
    } else if (inside && line.starts_with("$ gfast-report ")) {
      examples.push_back({line.substr(line.find(' ', 2) + 1), ""});
    } else if (inside) {
      examples.back().output += line + "\n";
    }
  }
  return examples;
}

TEST(ReportManual, ShowsWhatIsPrinted) {
  const TemporaryFolder folder;
  std::filesystem::create_directory_symlink(BOARDS, folder.file("boards"));
  const std::vector<Example> examples = examplesIn(readText(MANUAL));
  EXPECT_EQ(examples.size(), 4U);
  for (const Example& example : examples) {
    std::istringstream words(example.command);
    std::vector<std::string> command{GFAST_REPORT};
    command.insert(command.end(), std::istream_iterator<std::string>(words), {});
    ConsoleProgram program("", command, folder.path());
    EXPECT_EQ(program.wait(), 0) << program.errors();
    EXPECT_EQ(program.output(), example.output) << example.command;
  }
}

TEST(ReportOptions, AreChecked) {
  EXPECT_EQ(report({"--from", "nowhere"}).status, 2);
  EXPECT_EQ(report({"--line", "2"}).status, 2);
  EXPECT_THAT(report({"-o", "line.pdf"}).errors, HasSubstr("must end in one of .txt"));
}

TEST(ReportOptions, NameAConsoleThatIsThere) {
  const Ran ran = report({"--from", "127.0.0.1:1"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.errors, "gfast-report: 127.0.0.1:1: Connection refused\n");
}

}  // namespace
