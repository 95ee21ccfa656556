// The performance counters and their history at the real program, compared byte for byte with stored
// transcripts. Counters are pinned in the board's memory; what the wall clock decides is masked: the time in
// a stamp and the seconds collected.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>

#include "console/programs.h"
#include "support/stored_text.h"

namespace {

// Words that count up from the first, as a board file has them.
std::string words(int count, unsigned first) {
  std::string bytes;
  for (int i = 0; i < count; i++) {
    const unsigned word = first + static_cast<unsigned>(i);
    char text[16];
    std::snprintf(text, sizeof text, "%02x %02x %02x %02x ", word & 0xFF, word >> 8 & 0xFF, word >> 16 & 0xFF,
                  word >> 24);
    bytes += text;
  }
  bytes.pop_back();
  return bytes;
}

std::string pinned(int device, const char* address, const std::string& bytes) {
  return "[[memory]]\ndevice = " + std::to_string(device) + "\naddress = " + address + "\nbytes = \"" +
         bytes + "\"\n";
}

// The counters of one chip and of the far end that it hears, each word its own. Unavailable seconds are
// zero, because they are limited to the seconds collected so far, which the wall clock decides.
std::string pinnedChip(int device, unsigned first) {
  const std::string text =
      pinned(device, "0xF0000000", words(8, first) + " 00 00 00 00 " + words(30, first + 9)) +
      pinned(device, "0xE2880000", words(54, first + 1000)) +
      pinned(device, "0xE2440000", words(85, first + 2000));
  // The first read is the start's, from which the running quarter hour counts: without it everything is new.
  return text + "[[farend]]\nline = " + std::to_string(device) + "\nrequest = 0\nresponse = \"" +
         words(11, first + 3000) + "\"\n[[fault]]\ndevice = " + std::to_string(device) +
         "\nrequest = \"memread\"\naddress = 0xF0000000\nerrno = \"EIO\"\n";
}

// A zone in which it is five past ten, so that no quarter hour ends during a test.
std::string zoneAtFivePastTen() {
  constexpr int day = 86400;
  constexpr int wanted = 10 * 3600 + 5 * 60;
  int east = wanted - static_cast<int>(std::time(nullptr) % day);
  east += east <= -day / 2 ? day : 0;
  const int size = std::abs(east);
  char zone[40];
  std::snprintf(zone, sizeof zone, "LAB%c%d:%02d:%02d", east < 0 ? '+' : '-', size / 3600, size / 60 % 60,
                size % 60);
  return zone;
}

std::string masked(std::string text) {
  text = std::regex_replace(text, std::regex("(collection ?[tT]ime:? +)[0-9]{1,3}(\r\n)"), "$1<seconds>$2");
  return std::regex_replace(text, std::regex("20[0-9]{2}-[0-9]{2}-[0-9]{2}T10:0[5-9]:[0-9]{2}(\\+LAB\r\n)"),
                            "<time>$1");
}

std::string transcript(const std::string& board, const std::string& line) {
  const TemporaryFolder folder;
  setenv("TZ", zoneAtFivePastTen().c_str(), 1);
  ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", folder.write("board.toml", board), "--port", "0"});
  OpenSession session(program.port());
  std::string text;
  for (const std::string command :
       {"show pm-counters ", "show line performance-counters ", "show channel performance-counters ",
        "show 15min-counters ", "show 24hr-counters ", "show number 15min-intervals ",
        "show number 24hr-intervals ", "dump 15min-history "}) {
    const bool ends = command.find("performance-counters") != std::string::npos;
    const bool intervals = command == "show 15min-counters " || command == "show 24hr-counters ";
    for (const std::string& words : ends        ? std::vector<std::string>{"", " fe"}
                                    : intervals ? std::vector<std::string>{"", " 1"}
                                                : std::vector<std::string>{""}) {
      const std::string typed = command + line + words;
      text += "(gfast-cli)> " + typed + "\r\n" + session.type(typed);
    }
  }
  return masked(text);
}

std::string board(const std::string& state) {
  return boardWithLines(state) + pinnedChip(0, 100) + pinnedChip(1, 10100);
}

TEST(PerformanceTranscript, OfAnIdleLine) {
  expectStored(TRANSCRIPTS "/performance_idle.txt", transcript(board("idle"), "0"));
}

TEST(PerformanceTranscript, OfATrainingLine) {
  // The link state is pinned as well: a line that trains is up seconds later.
  const std::string training = "[[memory]]\ndevice = 0\naddress = 0xE1000024\nbytes = \"05 00 00 00\"\n";
  expectStored(TRANSCRIPTS "/performance_training.txt", transcript(board("showtime") + training, "0"));
}

TEST(PerformanceTranscript, OfALineInShowtime) {
  expectStored(TRANSCRIPTS "/performance_showtime.txt", transcript(board("showtime"), "0"));
}

TEST(PerformanceTranscript, AtTheSubscriberSide) {
  expectStored(TRANSCRIPTS "/performance_subscriber.txt", transcript(board("showtime"), "1"));
}

}  // namespace
