#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "qvrcli/vocabulary/command_table.h"
#include "support/vocabulary.h"

using namespace gfast;
using namespace gfast::console;

namespace {

long count(bool (*is)(const Command&)) {
  const auto table = commandTable();
  return std::count_if(table.begin(), table.end(), is);
}

const Command& row(const std::string& path, int mode) {
  for (const Command& command : commandTable()) {
    if (command.path == path && command.mode == mode) {
      return command;
    }
  }
  throw std::out_of_range(path);
}

TEST(CommandTable, HasEveryRegistrationInOrder) {
  const auto table = commandTable();
  ASSERT_EQ(table.size(), std::size(kVocabulary));
  ASSERT_EQ(table.size(), 153U);
  for (size_t i = 0; i < table.size(); i++) {
    SCOPED_TRACE(kVocabulary[i].path);
    EXPECT_STREQ(table[i].path, kVocabulary[i].path);
    EXPECT_STREQ(table[i].help, kVocabulary[i].help);
    EXPECT_STREQ(table[i].usage, kVocabulary[i].usage);
    EXPECT_EQ(table[i].mode, kVocabulary[i].mode);
    EXPECT_EQ(table[i].handler == nullptr, kVocabulary[i].help == nullptr);
  }
}

TEST(CommandTable, Has24KeywordsAnd71ExecAnd58ConfigurationCommands) {
  EXPECT_EQ(count([](const Command& c) { return c.handler == nullptr; }), 24);
  EXPECT_EQ(count([](const Command& c) { return c.handler != nullptr && c.mode == MODE_EXEC; }), 71);
  EXPECT_EQ(count([](const Command& c) { return c.handler != nullptr && c.mode == MODE_CONFIG; }), 58);
}

TEST(CommandTable, RegistersAKeywordBeforeTheWordsBelowIt) {
  std::set<std::string> keywords;
  for (const Command& command : commandTable()) {
    const std::string path = command.path;
    const size_t blank = path.rfind(' ');
    if (blank != std::string::npos) {
      EXPECT_TRUE(keywords.contains(path.substr(0, blank))) << path;
    }
    if (command.handler == nullptr) {
      EXPECT_TRUE(keywords.insert(path).second) << path;
    }
  }
}

TEST(CommandTable, HasEveryCommandOnce) {
  std::set<std::string> paths;
  for (const Command& command : commandTable()) {
    if (command.handler != nullptr) {
      EXPECT_TRUE(paths.insert(command.path).second) << command.path;
    }
  }
}

TEST(CommandTable, GivesEveryCommandAHandlerOfItsOwn) {
  std::set<Handler> handlers;
  for (const Command& command : commandTable()) {
    if (command.handler != nullptr) {
      EXPECT_TRUE(handlers.insert(command.handler).second) << command.path;
    }
  }
}

TEST(CommandTable, HasNoQuestionMarkInAKeyword) {
  for (const Command& command : commandTable()) {
    EXPECT_EQ(std::string(command.path).find('?'), std::string::npos) << command.path;
  }
}

TEST(CommandTable, KeepsTheOddTexts) {
  EXPECT_STREQ(row("show line config", MODE_EXEC).help, "Show line confgetiguration");
  EXPECT_STREQ(row("load bootloader", MODE_EXEC).help, "Erase bootloader from flash");
  EXPECT_STREQ(row("upgrade bootloader", MODE_EXEC).usage,
               "upgrade-bootloader [<filename>] [<device-id>] : { B1.bin 0 } ");
  EXPECT_STREQ(row("upgrade firmware", MODE_EXEC).usage,
               "upgrade firmware-image [<filename>] [<device-id>] : { triplet_dp_2_94.bin, 0 }");
  EXPECT_STREQ(row("start extcom-test", MODE_EXEC).usage, "start extcom-text");
  EXPECT_STREQ(row("show extcom-results", MODE_EXEC).usage, "start extcom-text");
  EXPECT_STREQ(row("stop logging", MODE_EXEC).usage, "stop logging ");
  EXPECT_STREQ(row("UPBOKLREF", MODE_CONFIG).usage, "UPBOKL <0, 18..255> * (0.1 dB)");
  EXPECT_STREQ(row("FRA_TIME", MODE_CONFIG).help, "Set duration of FRA triggering time window ");
  EXPECT_STREQ(row("show line performance-counters", MODE_EXEC).help,
               row("show channel performance-counters", MODE_EXEC).help);
}

struct Accepted {
  const char* path;
  int mode;
  int least;
  int most;
};

constexpr int kAny = 127;  // more words than a line holds

TEST(CommandTable, TakesTheRightNumberOfWordsForEachCommand) {
  constexpr Accepted expected[] = {
      {"show device-info", MODE_EXEC, 0, 1},
      {"read memory", MODE_EXEC, 3, kAny},
      {"show dictionary", MODE_EXEC, 0, kAny},
      {"show pm-counters", MODE_EXEC, 1, kAny},
      {"show line performance-counters", MODE_EXEC, 0, kAny},
      {"read sbr", MODE_EXEC, 0, 1},
      {"write memory", MODE_EXEC, 4, kAny},
      {"restart line", MODE_EXEC, 1, 1},
      {"restart system", MODE_EXEC, 0, 2},
      {"activate line", MODE_EXEC, 1, 1},
      {"deactivate line", MODE_EXEC, 0, 1},
      {"rediscover", MODE_EXEC, 0, 0},
      {"sleep", MODE_EXEC, 1, 1},
      {"reboot", MODE_EXEC, 0, 2},
      {"load bootloader", MODE_EXEC, 0, 2},
      {"upgrade bootloader", MODE_EXEC, 0, 2},
      {"upgrade manufacturer-block", MODE_EXEC, 0, 2},
      {"upgrade firmware", MODE_EXEC, 0, 2},
      {"erase bootloader", MODE_EXEC, 0, 1},
      {"erase manufacturer-block", MODE_EXEC, 0, 1},
      {"erase firmware", MODE_EXEC, 0, 1},
      {"erase flash", MODE_EXEC, 0, 1},
      {"run", MODE_EXEC, 0, 2},
      {"show version", MODE_EXEC, 0, kAny},
      {"show gfast-counters", MODE_EXEC, 1, 2},
      {"show vectoring canceler", MODE_EXEC, 2, 2},
      {"show log-level", MODE_EXEC, 0, 0},
      {"show extcom-results", MODE_EXEC, 0, 1},
      {"show system restart-state", MODE_EXEC, 0, 0},
      {"start logging", MODE_EXEC, 0, 1},
      {"start extcom-test", MODE_EXEC, 0, 1},
      {"stop logging", MODE_EXEC, 0, 1},
      {"generate signal", MODE_EXEC, 0, 1},
      {"transmit signal", MODE_EXEC, 0, 2},
      {"receive signal", MODE_EXEC, 0, 2},
      {"test afe-loop", MODE_EXEC, 2, 4},
      {"test afe-mtpr", MODE_EXEC, 2, 5},
      {"test afe-mtpr-loop", MODE_EXEC, 2, 4},
      {"analyze crashdump", MODE_EXEC, 1, 3},
      {"show 15min-counters", MODE_EXEC, 0, 2},
      {"show number lines", MODE_EXEC, 0, 0},
      {"show channel status", MODE_EXEC, 0, 2},
      {"set log-level", MODE_EXEC, 1, 1},
      {"TARSNRM", MODE_CONFIG, 2, 2},
      {"Mds", MODE_CONFIG, 1, 1},
      {"CARMASK", MODE_CONFIG, 4, 4},
      {"PSDMASK", MODE_CONFIG, 4, 4},
      {"RFIBAND", MODE_CONFIG, 3, 3},
      {"cDTA_ENABLE", MODE_CONFIG, 1, 1},
      {"restore", MODE_CONFIG, 0, 0},
      {"save", MODE_CONFIG, 0, 1},
      {"show", MODE_CONFIG, 0, 0},
      {"get", MODE_CONFIG, 0, 1},
  };
  for (const Accepted& command : expected) {
    for (int argc = 0; argc <= kAny; argc++) {
      EXPECT_EQ(row(command.path, command.mode).accepts(argc), argc >= command.least && argc <= command.most)
          << command.path << " with " << argc;
    }
  }
}

TEST(CommandTable, TakesAnyNumberOfInventoryWordsButFour) {
  for (int argc = 0; argc <= kAny; argc++) {
    EXPECT_EQ(row("set inventory", MODE_EXEC).accepts(argc), argc != 4) << argc;
  }
}

TEST(CommandTable, TakesTwoWordsWhereADirectionComesFirst) {
  for (const Command& command : commandTable()) {
    const std::string path = command.path;
    if (command.mode == MODE_CONFIG && path != "CARMASK" && path != "PSDMASK" &&
        std::string(command.usage).find("(ds | us)") != std::string::npos) {
      EXPECT_TRUE(command.accepts(2) && !command.accepts(1) && !command.accepts(3)) << path;
    }
  }
}

// With that many words or more a command changes a chip, its flash or a file. All others only read.
TEST(CommandTable, KnowsWhatChangesSomething) {
  const std::map<std::string, int> changing = {
      {"write memory", 0},
      {"show BITSps", 3},
      {"show BITS-RMCps", 3},
      {"show SNRps", 3},
      {"show ALNps", 3},
      {"show HLOGps", 3},
      {"show vectoring canceler", 0},
      {"show vectoring precoder", 0},
      {"show phy info", 3},
      {"set inventory", 0},
      {"restart line", 0},
      {"restart system", 0},
      {"activate line", 0},
      {"deactivate line", 0},
      {"start logging", 0},
      {"start extcom-test", 0},
      {"show extcom-results", 0},
      {"save", 0},
      {"rediscover", 0},
      {"reboot", 0},
      {"load bootloader", 0},
      {"upgrade bootloader", 0},
      {"upgrade manufacturer-block", 0},
      {"upgrade firmware", 0},
      {"erase bootloader", 0},
      {"erase manufacturer-block", 0},
      {"erase firmware", 0},
      {"erase flash", 0},
      {"test afe-loop", 0},
      {"test afe-mtpr", 0},
      {"test afe-mtpr-loop", 0},
      {"transmit signal", 0},
      {"receive signal", 0},
      {"generate signal", 0},
      {"analyze crashdump", 3},
  };
  size_t found = 0;
  for (const Command& command : commandTable()) {
    const auto least = changing.find(command.path);
    found += least != changing.end() ? 1 : 0;
    for (int argc = 0; argc <= kAny; argc++) {
      EXPECT_EQ(command.effect.changes(argc), least != changing.end() && argc >= least->second)
          << command.path << " with " << argc;
    }
  }
  EXPECT_EQ(found, changing.size());
}

}  // namespace
