// The README's transcript is what the lab prints.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "console/programs.h"

namespace {

constexpr std::string_view kTyped = "(gfast-cli)> ";

// The lines between the fences of the README's console block.
std::vector<std::string> transcript() {
  std::vector<std::string> lines;
  std::ifstream readme(README);
  bool inside = false;
  for (std::string line; std::getline(readme, line);) {
    if (line.starts_with("```")) {
      inside = line == "```console";
    } else if (inside) {
      lines.push_back(line);
    }
  }
  return lines;
}

TEST(Readme, ShowsWhatTheLabPrints) {
  std::string expected;
  std::string shown;
  ConsoleProgram program(LAUNCHER, {gfastLab(), "--port", "0"});
  OpenSession session(program.port());
  for (const std::string& line : transcript()) {
    expected += line + "\n";
    if (line.starts_with(kTyped)) {
      shown += line + "\n" + session.type(line.substr(kTyped.size()));
    }
  }
  std::erase(shown, '\r');
  EXPECT_FALSE(shown.empty());
  EXPECT_EQ(shown, expected);
}

}  // namespace
