// A console that answers with what a real one printed.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "gfast-report/console/read_console.h"
#include "support/text_file.h"

// The replies of a transcript (the name of its file), by command.
inline std::map<std::string, std::string> repliesIn(const std::string& file) {
  constexpr std::string_view kPrompt = "(gfast-cli)> ";
  std::map<std::string, std::string> replies;
  const std::string text = readText(file) + std::string(kPrompt);
  for (size_t at = kPrompt.size(); at < text.size();) {
    const size_t end = text.find('\n', at);
    const size_t next = text.find(kPrompt, at);
    std::string& reply = replies[text.substr(at, end - at)];
    for (const char character : text.substr(end + 1, next - end - 1)) {
      reply += character == '\n' ? "\r\n" : std::string(1, character);
    }
    at = next + kPrompt.size();
  }
  return replies;
}

// A transcript of a line, and for both directions the tables of a line in showtime.
class StoredConsole {
 public:
  explicit StoredConsole(const std::string& name) : replies_(repliesIn(TRANSCRIPTS "/" + name)) {
    for (const char* table : {"BITSps", "SNRps", "ALNps", "HLOGps"}) {
      const std::string stored = std::string(TONE_TRANSCRIPTS "/tones-") + table + "-0-us-whole.txt";
      for (const char* words : {" 0 ds", " 0 us", " 1 ds", " 1 us"}) {
        replies_[std::string("show ") + table + words] = repliesIn(stored).begin()->second;
      }
    }
  }

  // What is printed instead.
  std::string& operator[](const std::string& command) { return replies_.at(command); }

  const std::vector<std::string>& asked() const { return asked_; }

  gfast::report::TakenReading read(QVR_lineId_t line) {
    const gfast::report::Ask ask = [this](const std::string& command) {
      asked_.push_back(command);
      const auto found = replies_.find(command);
      return found == replies_.end() ? "Invalid command \"" + command + "\"\r\n" : found->second;
    };
    return gfast::report::readConsole(ask, line, kNow, [](const std::string&) {});
  }

  // When the transcripts were made, by the console's own clock.
  static constexpr time_t kNow = 1704069200;

 private:
  std::map<std::string, std::string> replies_;
  std::vector<std::string> asked_;
};
