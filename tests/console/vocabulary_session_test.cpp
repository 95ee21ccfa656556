// Every command word, typed at the real program.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "console/programs.h"
#include "support/vocabulary.h"

namespace {

// Clears the line that stays behind the prompt after a '?'.
void dropLine(ConsoleSession& session) {
  session.send("\x15\r");
  session.readUntil(")> ");
}

void expectUsage(ConsoleSession& session, const VocabularyRow& row) {
  const std::string line = std::string(row.path) + " ";
  EXPECT_EQ(session.typeKeys(line + "?"), line + "\r\n" + row.usage + "\r\n");
  dropLine(session);
}

TEST(Vocabulary, PrintsTheUsageOfEveryExecCommandForAQuestionMark) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const VocabularyRow& row : kVocabulary) {
    if (row.usage != nullptr && row.mode == MODE_EXEC) {
      expectUsage(session, row);
    }
  }
}

TEST(Vocabulary, PrintsTheUsageOfEveryConfigurationCommandForAQuestionMark) {
  LabServer lab;
  OpenSession session(lab.port());
  EXPECT_EQ(session.type("configure"), "");
  for (const VocabularyRow& row : kVocabulary) {
    if (row.usage != nullptr && row.mode == MODE_CONFIG) {
      expectUsage(session, row);
    }
  }
}

TEST(Vocabulary, EveryConfigurationWordReachesItsOwnHandler) {
  LabServer lab;
  OpenSession session(lab.port());
  session.type("configure");
  int words = 0;
  for (const VocabularyRow& row : kVocabulary) {
    if (row.mode == MODE_CONFIG) {
      words++;
      // More words than any of them takes.
      EXPECT_EQ(session.type(std::string(row.path) + " a b c d e f g h i"), std::string(row.usage) + "\r\n")
          << row.path;
    }
  }
  EXPECT_EQ(words, 58);
}

TEST(Vocabulary, RefusesConfigurationWordsInExecMode) {
  LabServer lab;
  OpenSession session(lab.port());
  const std::set<std::string> both = {"show"};
  for (const VocabularyRow& row : kVocabulary) {
    if (row.mode == MODE_CONFIG && !both.contains(row.path)) {
      EXPECT_EQ(session.type(row.path), "Invalid command \"" + std::string(row.path) + "\"\r\n");
    }
  }
}

TEST(Vocabulary, RefusesExecCommandsInConfigurationMode) {
  LabServer lab;
  OpenSession session(lab.port());
  session.type("configure");
  for (const VocabularyRow& row : kVocabulary) {
    const std::string path = row.path;
    if (row.mode == MODE_EXEC && !path.starts_with("show")) {
      const std::string word = path.substr(0, path.find(' '));
      EXPECT_EQ(session.type(path), "Invalid command \"" + word + "\"\r\n");
    }
  }
  EXPECT_EQ(session.type("show version"), "show\r\n");
}

TEST(Vocabulary, HelpListsEveryCommandInOrder) {
  LabServer lab;
  OpenSession session(lab.port());
  const std::string help = session.type("help");
  size_t at = 0;
  for (const VocabularyRow& row : kVocabulary) {
    if (row.help != nullptr && row.mode == MODE_EXEC) {
      const size_t found = help.find("  " + std::string(row.path) + " ", at);
      ASSERT_NE(found, std::string::npos) << row.path;
      at = found;
      EXPECT_NE(help.find(row.help, at), std::string::npos) << row.path;
    }
  }
}

TEST(Vocabulary, KeepsTheCommandsOfTheInterpreter) {
  LabServer lab;
  OpenSession session(lab.port());
  const std::string help = session.type("help");
  EXPECT_TRUE(
      help.starts_with("\r\nCommands available:\r\n"
                       "  help                 Show available commands\r\n"
                       "  quit                 Disconnect\r\n"
                       "  logout               Disconnect\r\n"
                       "  exit                 Exit from current mode\r\n"
                       "  history              Show a list of previously run commands\r\n"
                       "  enable               Turn on privileged commands\r\n"
                       "  configure            Enter configuration mode\r\n"
                       "  read memory          Read memory from device\r\n"))
      << help;
  EXPECT_EQ(session.type("history"), "\r\nCommand history:\r\n  0. help\r\n");
}

TEST(Vocabulary, EnableAsksForNoPassword) {
  LabServer lab;
  OpenSession session(lab.port());
  session.send("enable\r");
  EXPECT_EQ(session.readUntil("(gfast-cli)# "), "enable\r\n\r\n(gfast-cli)# ");
  session.send("disable\r");
  EXPECT_EQ(session.readUntil(kPrompt), "disable\r\n" + std::string(kPrompt));
}

TEST(Vocabulary, EntersConfigurationModeWithoutPrivilegeAndLeavesItByExit) {
  LabServer lab;
  OpenSession session(lab.port());
  session.send("configure\r");
  EXPECT_EQ(session.readUntil(kConfigPrompt), "configure\r\n" + std::string(kConfigPrompt));
  session.send("exit\r");
  EXPECT_EQ(session.readUntil(kPrompt), "exit\r\n" + std::string(kPrompt));
}

TEST(Vocabulary, KeywordAloneIsIncomplete) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const VocabularyRow& row : kVocabulary) {
    if (row.help == nullptr) {
      EXPECT_EQ(session.type(row.path), "Incomplete command\r\n") << row.path;
    }
  }
}

TEST(Vocabulary, CompletesWords) {
  LabServer lab;
  OpenSession session(lab.port());
  session.send("sh\tver\t");
  EXPECT_EQ(session.typeKeys("\r"),
            "sh\b\bshow ver\b\b\bversion \r\n$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $\r\n");
}

TEST(Vocabulary, RefusesAnAbbreviationThatFitsTwoWordsWhateverTheirCase) {
  LabServer lab;
  OpenSession session(lab.port());
  EXPECT_EQ(session.type("show e"), "Invalid command \"show e\"\r\n");
  session.type("configure");
  EXPECT_EQ(session.type("sh"), "Invalid command \"sh\"\r\n");
  EXPECT_EQ(session.type("lo"), "Invalid command \"lo\"\r\n");
}

TEST(Vocabulary, TakesWordsInAnyCaseForAQuestionMarkAndTab) {
  LabServer lab;
  OpenSession session(lab.port());
  EXPECT_EQ(session.typeKeys("ShOw VeRsIoN ?"), "ShOw VeRsIoN \r\nshow version\r\n");
  dropLine(session);
  session.send("sHo\tvEr\t");
  EXPECT_EQ(session.typeKeys("\r"), std::string("sHo\b\b\bshow vEr\b\b\bversion \r\n") + kVersion);
  session.type("configure");
  EXPECT_EQ(session.typeKeys("cdta_MIN?"), "cdta_MIN\r\n  cDTA_MINMds          Set cDTA_MINMds\r\n");
  dropLine(session);
  EXPECT_EQ(session.typeKeys("CdTa_mInMDS ?"), "CdTa_mInMDS \r\ncDTA_MINMds <8..30>\r\n");
  dropLine(session);
  session.send("CDTA_e\t");
  EXPECT_EQ(session.typeKeys("\r"), "CDTA_e\b\b\b\b\b\bcDTA_ENABLE \r\ncDTA_ENABLE <T | F>\r\n");
}

}  // namespace
