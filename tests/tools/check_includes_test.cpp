// tools/check-includes, run on small trees that are laid out as the project is.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>

namespace {

namespace fs = std::filesystem;

struct Outcome {
  std::string output;
  int status;
};

Outcome run(const std::string& command) {
  std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  Outcome outcome;
  char buffer[4096];
  for (size_t got = 0; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    outcome.output.append(buffer, got);
  }
  const int status = ::pclose(pipe);
  outcome.status = WEXITSTATUS(status);
  return outcome;
}

Outcome check(const std::string& tree) {
  return run(PROJECT_TREE "/tools/check-includes '" + tree + '\'');
}

// One file or more of most rooms, with includes that every one of them may have.
class Tree {
 public:
  Tree() {
    char folder[] = "/tmp/check-includes-XXXXXX";
    root_ = ::mkdtemp(folder);
    write("gfast-sdk/include/gfast_api.h", "#include <stdint.h>\n");
    write("gfast-sdk/include/qvr.h", "#include <qvr/types.h>\n");
    write("gfast-sdk/include/qvr/types.h", "#include <gfast_api.h>\n#include <chip/counter_records.h>\n");
    write("gfast-sdk/chip/counter_records.h", "#include <stdint.h>\n");
    write("gfast-sdk/chip/flash_layout.h", "#include <cstdint>\n");
    write("gfast-sdk/std/byte_order.h", "#include <cstdint>\n");
    write("gfast-sdk/driver/driver.h", "#include <gfast_api.h>\n");
    write("gfast-sdk/qvrdev/memory.h", "#include <qvr.h>\n");
    write("gfast-sdk/qvrdev/memory.cpp",
          "#include \"qvrdev/memory.h\"\n#include <fmt/printf.h>\n#include <mutex>\n#include "
          "\"chip/flash_layout.h\"\n"
          "#include \"driver/driver.h\"\n#include \"std/byte_order.h\"\n");
    write("gfast-sdk/qvrline/eoc.h", "#include \"qvrdev/memory.h\"\n");
    write("gfast-sdk/qvrparams/dictionary.cpp", "#include \"qvrline/eoc.h\"\n#include \"memory.h\"\n");
    write("gfast-sdk/qvrparams/memory.h", "");
    write("gfast-cli/gfast-cli.cpp", "#include \"qvrcli/run_console.h\"\n");
    write("gfast-cli/qvrcli/run_console.h", "#include <libcli.h>\n");
    write("gfast-cli/qvrcli/session/server.cpp",
          "#include <sys/socket.h>\n#include \"qvrcli/text/rows.h\"\n");
    write("gfast-cli/qvrcli/text/rows.h", "#include <fmt/format.h>\n#include <qvr.h>\n");
    write("gfast-cli/qvrcli/text/words.inc", "");
    write("gfast-cli/qvrcli/tones/tones.h", "#include \"chip/flash_layout.h\"\n");
    write("gfast-cli/qvrcli/vocabulary/rows.cpp", "#include \"qvrcli/tones/tones.h\"\n");
    write("virtual-board/base/agenda.h", "#include <map>\n");
    write("virtual-board/chip/flash_layout.h",
          "#include \"chip/flash_layout.h\"\n#include \"virtual-board/base/agenda.h\"\n");
    write("virtual-board/board/virtual_board.h",
          "#include <driver/driver.h>\n#include \"virtual-board/chip/flash_layout.h\"\n");
    write("virtual-board/description/file.cpp", "#include <toml++/toml.h>\n");
    write("gfast-lab/gfast-lab.cpp",
          "#include <CLI/CLI.hpp>\n#include \"qvrcli/run_console.h\"\n"
          "#include \"virtual-board/board/virtual_board.h\"\n");
    write("tests/support/doubles.h", "#include <gtest/gtest.h>\n#include \"qvrline/eoc.h\"\n");
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  ~Tree() { fs::remove_all(root_); }

  const std::string& root() const { return root_; }

  void write(const std::string& path, const std::string& text) const {
    const fs::path file = fs::path(root_) / path;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
  }

 private:
  std::string root_;
};

struct Refusal {
  const char* name;
  const char* file;
  const char* text;
  const char* output;  // behind the file's name
};

std::ostream& operator<<(std::ostream& out, const Refusal& refusal) {
  return out << refusal.name;
}

constexpr Refusal kRooms[] = {
    {"UpwardInQuotes", "gfast-sdk/qvrdev/up.cpp", "\n#include \"qvrline/eoc.h\"\n",
     ":2: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"UpwardInBrackets", "gfast-sdk/qvrdev/up.cpp", "#include <qvrline/eoc.h>\n",
     ":1: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"UpwardInTheBoard", "virtual-board/chip/up.cpp", "#include \"virtual-board/board/virtual_board.h\"\n",
     ":1: virtual-board/chip must not know virtual-board/board/virtual_board.h"},
    {"TextThatKnowsAFamily", "gfast-cli/qvrcli/text/up.cpp", "#include \"qvrcli/tones/tones.h\"\n",
     ":1: gfast-cli/qvrcli/text must not know gfast-cli/qvrcli/tones/tones.h"},
    {"ChipMemoryInTheSession", "gfast-cli/qvrcli/session/raw.cpp", "#include \"chip/flash_layout.h\"\n",
     ":1: gfast-cli/qvrcli/session must not know gfast-sdk/chip/flash_layout.h"},
    {"TheLibraryBehindTheBoard", "virtual-board/board/library.cpp", "#include <qvr.h>\n",
     ":1: virtual-board/board must not know gfast-sdk/include/qvr.h"},
    {"TheBoardInTheLibrary", "gfast-sdk/qvrline/board.cpp", "#include \"virtual-board/base/agenda.h\"\n",
     ":1: gfast-sdk/qvrline must not know virtual-board/base/agenda.h"},
    {"ATestsHeader", "gfast-sdk/qvrdev/double.cpp", "#include \"support/doubles.h\"\n",
     ":1: gfast-sdk/qvrdev must not know tests/support/doubles.h"},
    {"AnInternalHeaderInAPublicOne", "gfast-sdk/include/qvr/lines.h",
     "#include <stdint.h>\n#include <qvrdev/memory.h>\n",
     ":2: gfast-sdk/include/qvr must not know gfast-sdk/qvrdev/memory.h"},
    {"AChipHeaderInAPublicOne", "gfast-sdk/include/qvr/lines.h", "#include <chip/flash_layout.h>\n",
     ":1: gfast-sdk/include/qvr must not know gfast-sdk/chip/flash_layout.h"},
    {"AnythingInTheDriversContract", "gfast-sdk/include/gfast_api.h", "#include <qvr/types.h>\n",
     ":1: gfast-sdk/include/gfast_api.h must not know gfast-sdk/include/qvr/types.h"},
    {"AFolderWithoutARow", "gfast-sdk/qvrnew/new.cpp", "#include <cstdint>\n",
     ":1: no row for the folder \"gfast-sdk/qvrnew\""},
};

constexpr Refusal kSystemHeaders[] = {
    {"OfAnotherRoom", "virtual-board/line/socket.cpp", "#include <sys/socket.h>\n",
     ":1: virtual-board/line must not include the system header <sys/socket.h>"},
    {"OfAnotherRoomInQuotes", "virtual-board/line/socket.cpp", "#include \"sys/socket.h\"\n",
     ":1: virtual-board/line must not include the system header \"sys/socket.h\""},
    {"OfAnotherLibrary", "gfast-sdk/qvrdev/toml.cpp", "#include <toml++/toml.h>\n",
     ":1: gfast-sdk/qvrdev must not include the system header <toml++/toml.h>"},
    {"OfCxxInAPublicHeader", "gfast-sdk/include/qvr/lines.h", "#include <vector>\n",
     ":1: gfast-sdk/include/qvr must not include the system header <vector>"},
    {"OfATestLibrary", "gfast-sdk/qvrdev/test.cpp", "#include <gtest/gtest.h>\n",
     ":1: <gtest/gtest.h> is neither in the tree nor listed"},
    {"ThatNobodyListed", "gfast-cli/qvrcli/text/odd.cpp", "#include <filesystem>\n",
     ":1: <filesystem> is neither in the tree nor listed"},
};

constexpr Refusal kUnknown[] = {
    {"HeaderInQuotes", "gfast-sdk/qvrdev/odd.cpp", "#include \"qvrdev/missing.h\"\n",
     ":1: \"qvrdev/missing.h\" is neither in the tree nor listed"},
    {"HeaderInTwoPlaces", "gfast-sdk/qvrdev/qvr.h", "#include \"qvr.h\"\n",
     ":1: \"qvr.h\" may be any of gfast-sdk/include/qvr.h gfast-sdk/qvrdev/qvr.h"},
    {"PathThroughTheParentFolder", "gfast-sdk/qvrdev/odd.cpp", "#include \"../qvrline/eoc.h\"\n",
     ":1: \"../qvrline/eoc.h\" is no plain path"},
    {"SourceFile", "gfast-sdk/qvrdev/odd.cpp", "#include \"qvrdev/memory.cpp\"\n",
     ":1: \"qvrdev/memory.cpp\" is no header"},
};

constexpr Refusal kSpelling[] = {
    {"BlanksAroundTheHash", "gfast-sdk/qvrdev/odd.cpp", "  #\t include<qvrline/eoc.h>  // why\n",
     ":1: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"Digraph", "gfast-sdk/qvrdev/odd.cpp", "%: include \"qvrline/eoc.h\"\n",
     ":1: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"CommentsInBetween", "gfast-sdk/qvrdev/odd.cpp",
     "/* one\n two */ # /* three */ include /* four */ \"qvrline/eoc.h\" /* five */\n",
     ":2: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"ContinuedLines", "gfast-sdk/qvrdev/odd.cpp", "\n#inc\\\nlude \\\n  \"qvrline/eoc.h\"\n",
     ":2: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"LineEndsWithCarriageReturns", "gfast-sdk/qvrdev/odd.cpp",
     "#include <cstdint>\r\n#include \\\r\n\"qvrline/eoc.h\"\r\n",
     ":2: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"BehindAQuoteInAString", "gfast-sdk/qvrdev/odd.cpp",
     "const char* a = \"\\\"/*\";  // '\nchar b = '\"';\n#include \"qvrline/eoc.h\"\n// */\n",
     ":3: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"BehindASeparatorInANumber", "gfast-sdk/qvrdev/odd.cpp",
     "int a = 1'0;  // it's /*\n#include \"qvrline/eoc.h\"\n// */\n",
     ":2: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"InACaseThatIsNotCompiled", "gfast-sdk/qvrdev/odd.cpp", "#if 0\n#include \"qvrline/eoc.h\"\n#endif\n",
     ":2: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"Macro", "gfast-sdk/qvrdev/odd.cpp", "#define WHICH \"chip/flash_layout.h\"\n#include WHICH\n",
     ":2: #include WHICH: write the header out"},
    {"NothingAtAll", "gfast-sdk/qvrdev/odd.cpp", "#include\n", ":1: #include : write the header out"},
    {"IncludeNext", "gfast-sdk/qvrdev/odd.cpp", "#include_next <cstdint>\n",
     ":1: #include_next is not used here"},
    {"Import", "gfast-sdk/qvrdev/odd.cpp", "#import <cstdint>\n", ":1: #import is not used here"},
};

constexpr Refusal kKinds[] = {
    {"CSource", "gfast-sdk/qvrdev/odd.c", "#include \"qvrline/eoc.h\"\n",
     ":1: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h"},
    {"ListThatIsIncluded", "gfast-cli/qvrcli/text/words.inc", "#include \"qvrcli/tones/tones.h\"\n",
     ":1: gfast-cli/qvrcli/text must not know gfast-cli/qvrcli/tones/tones.h"},
};

class RefusedInclude : public testing::TestWithParam<Refusal> {};

std::string nameOf(const testing::TestParamInfo<Refusal>& info) {
  return info.param.name;
}

}  // namespace

TEST(CheckIncludes, AcceptsATreeThatKeepsTheRules) {
  const Tree tree;
  const Outcome outcome = check(tree.root());
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.status, 0);
}

TEST(CheckIncludes, AcceptsThisProject) {
  const Outcome outcome = check(PROJECT_TREE);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.status, 0);
}

TEST_P(RefusedInclude, IsNamedByFileAndLine) {
  const Tree tree;
  tree.write(GetParam().file, GetParam().text);
  const Outcome outcome = check(tree.root());
  EXPECT_EQ(outcome.output, std::string(GetParam().file) + GetParam().output + '\n');
  EXPECT_EQ(outcome.status, 1);
}

INSTANTIATE_TEST_SUITE_P(Rooms, RefusedInclude, testing::ValuesIn(kRooms), nameOf);
INSTANTIATE_TEST_SUITE_P(SystemHeaders, RefusedInclude, testing::ValuesIn(kSystemHeaders), nameOf);
INSTANTIATE_TEST_SUITE_P(Unknown, RefusedInclude, testing::ValuesIn(kUnknown), nameOf);
INSTANTIATE_TEST_SUITE_P(Spelling, RefusedInclude, testing::ValuesIn(kSpelling), nameOf);
INSTANTIATE_TEST_SUITE_P(Kinds, RefusedInclude, testing::ValuesIn(kKinds), nameOf);

TEST(CheckIncludes, LeavesAloneWhatIncludesNothing) {
  const Tree tree;
  tree.write("gfast-sdk/qvrdev/odd.cpp",
             "#if __has_include(<missing.h>) || __has_include_next(\"qvrline/eoc.h\")\n#endif\n"
             "// #include \"missing.h\"\n/*\n#include \"missing.h\"\n*/\n"
             "const char* text = R\"x(\n#include \"missing.h\"\n)\" )x\";\n"
             "#define includes 1\n#pragma message(\"#include <missing.h>\")\nint include = 1;\n");
  EXPECT_EQ(check(tree.root()).output, "");
}

TEST(CheckIncludes, LeavesAloneWhatTestsInclude) {
  const Tree tree;
  tree.write("tests/unit/any_test.cpp", "#include <regex>\n#include \"missing.h\"\n");
  tree.write("benchmarks/any.cpp", "#include <benchmark/benchmark.h>\n");
  EXPECT_EQ(check(tree.root()).output, "");
}

TEST(CheckIncludes, NamesEveryMistake) {
  const Tree tree;
  tree.write("gfast-sdk/qvrdev/a.cpp", "#include <missing.h>\n#include \"qvrline/eoc.h\"\n");
  tree.write("virtual-board/base/b.h", "#include <libcli.h>\n");
  EXPECT_EQ(check(tree.root()).output,
            "gfast-sdk/qvrdev/a.cpp:1: <missing.h> is neither in the tree nor listed\n"
            "gfast-sdk/qvrdev/a.cpp:2: gfast-sdk/qvrdev must not know gfast-sdk/qvrline/eoc.h\n"
            "virtual-board/base/b.h:1: virtual-board/base must not include the system header <libcli.h>\n");
}

TEST(CheckIncludes, PassesOverABuildFolder) {
  const Tree tree;
  tree.write("out/CMakeCache.txt", "");
  tree.write("out/CMakeFiles/id.c", "#include \"missing.h\"\n");
  EXPECT_EQ(check(tree.root()).output, "");
}

TEST(CheckIncludes, InACheckoutJudgesAllThatGitDoesNotIgnore) {
  if (run("git --version").status != 0) {
    GTEST_SKIP() << "git is not installed";
  }
  const Tree tree;
  tree.write(".gitignore", "/made/\n");
  tree.write("made/id.c", "#include \"missing.h\"\n");
  tree.write("gfast-sdk/qvrdev/known.cpp", "#include <missing.h>\n");
  ASSERT_EQ(run("cd '" + tree.root() + "' && git init -q . && git add gfast-sdk").status, 0);
  tree.write("gfast-sdk/qvrdev/untracked.cpp", "#include <missing.h>\n");
  fs::remove(tree.root() + "/gfast-sdk/qvrparams/dictionary.cpp");
  EXPECT_EQ(check(tree.root()).output,
            "gfast-sdk/qvrdev/known.cpp:1: <missing.h> is neither in the tree nor listed\n"
            "gfast-sdk/qvrdev/untracked.cpp:1: <missing.h> is neither in the tree nor listed\n");
}

TEST(CheckIncludes, SaysThatATreeCannotBeJudged) {
  const Outcome missing = check("/nonexistent");
  EXPECT_EQ(missing.output, "check-includes: /nonexistent: No such file or directory\n");
  EXPECT_EQ(missing.status, 2);
  const Tree tree;
  fs::create_directory(tree.root() + "/empty");
  const Outcome empty = check(tree.root() + "/empty");
  EXPECT_EQ(empty.output, "check-includes: " + tree.root() + "/empty: no source files\n");
  EXPECT_EQ(empty.status, 2);
}
