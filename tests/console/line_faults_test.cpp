// The course in docs/line-faults.md: each of its transcripts is what the lab prints.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "console/programs.h"
#include "support/stored_text.h"

namespace {

constexpr std::string_view kStarted = "$ gfast-lab ";
constexpr std::string_view kTyped = "(gfast-cli)> ";

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

// What the lab prints that is started as the transcript's first line says, to what is typed in the others.
std::string typedAnew(const std::vector<std::string>& transcript) {
  std::vector<std::string> command = wordsOf(transcript.front().substr(kStarted.size()));
  command.insert(command.begin(), gfastLab());
  command.insert(command.end(), {"--port", "0"});
  ConsoleProgram program(LAUNCHER, command, COURSE_FOLDER);
  OpenSession session(program.port());
  std::string text = transcript.front() + '\n';
  for (const std::string& line : transcript) {
    if (line.starts_with(kTyped)) {
      text += line + '\n' + session.type(line.substr(kTyped.size()));
    }
  }
  std::erase(text, '\r');
  return text;
}

// GFAST_RENEW_TEXTS=1 writes what the lab prints into the document.
TEST(LineFaults, EveryTranscriptIsWhatTheLabPrints) {
  setenv("TZ", "UTC0", 1);
  const std::string path = COURSE_FOLDER "/line-faults.md";
  std::string printed;
  std::vector<std::string> transcript;
  int transcripts = 0;
  for (const std::string& line : linesOf(readText(path))) {
    if (line.starts_with(kStarted) || !transcript.empty()) {
      if (!line.starts_with("```")) {
        transcript.push_back(line);
        continue;
      }
      printed += typedAnew(transcript);
      transcript.clear();
      transcripts++;
    }
    printed += line + '\n';
  }
  EXPECT_GE(transcripts, 10);
  expectStored(path, printed);
}

}  // namespace
