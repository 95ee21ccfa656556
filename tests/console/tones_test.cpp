// The tables by subcarrier of both ends of the line, in the session and in files, compared byte for byte with
// stored texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "console/lab_on_board.h"
#include "support/stored_text.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kRows = 2048;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// A number that differs for different texts (FNV-1a).
std::string fingerprint(const std::string& text) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const char character : text) {
    hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3;
  }
  std::ostringstream stream;
  stream << std::hex << hash;
  return stream.str();
}

// A long text as it is stored: its size and fingerprint, and for the reader the rows at the ends of the band
// and every hundredth.
std::string abridged(const std::string& text, size_t headings = 0) {
  const std::vector<std::string> lines = linesOf(text);
  std::string result = std::to_string(lines.size()) + " lines, " + std::to_string(text.size()) +
                       " bytes, fingerprint " + fingerprint(text) + "\n";
  for (size_t i = 0; i < lines.size(); i++) {
    const size_t row = i < headings ? 0 : i - headings;
    if (i < headings || row % 100 == 0 || row == 42 || row == 43 || row == 1971 || row == 1972 ||
        i + 1 == lines.size()) {
      result += lines[i] + "\n";
    }
  }
  return result;
}

std::string transcript(const std::string& name) {
  return std::string(TRANSCRIPTS) + "/" + name + ".txt";
}

class Tones : public LabOnBoard {
 protected:
  explicit Tones(const std::string& board = boardWithLines("showtime")) { start(board); }

  // What a line prints, without the session's carriage returns.
  std::string typed(const std::string& line) {
    std::string text = LabOnBoard::typed(line);
    std::erase(text, '\r');
    return text;
  }
  // Line and answer as they stand in a transcript.
  std::string exchange(const std::string& line) { return "(gfast-cli)> " + line + "\n" + typed(line); }
  std::string abridgedExchange(const std::string& line, size_t headings = 0) {
    return "(gfast-cli)> " + line + "\n" + abridged(typed(line), headings);
  }
};

const std::vector<std::string> kTables = {"BITSps", "BITS-RMCps", "SNRps", "ALNps", "HLOGps"};
const std::vector<std::string> kEnds = {"0 ds", "0 us", "1 ds", "1 us"};

TEST_F(Tones, TablesMatchTheTranscript) {
  for (const std::string& table : kTables) {
    std::string text;
    for (const std::string& end : kEnds) {
      text += abridgedExchange("show " + table + " " + end);
    }
    expectStored(transcript("tones-" + table), text);
  }
}

TEST_F(Tones, WholeTablesMatchTheTranscript) {
  for (const std::string& table : kTables) {
    expectStored(transcript("tones-" + table + "-0-us-whole"), exchange("show " + table));
  }
}

// However many rows are printed at a time, a filter sees each by itself.
TEST_F(Tones, RowsAreFilteredOneByOne) {
  const std::vector<std::string> rows = linesOf(typed("show BITSps 0 ds"));
  EXPECT_EQ(typed("show BITSps 0 ds | count"), std::to_string(kRows) + "\n");
  EXPECT_EQ(typed("show BITSps 0 ds | begin " + rows[2046].substr(0, 4)),
            rows[2046] + "\n" + rows[2047] + "\n");
  EXPECT_EQ(typed("show BITSps 0 ds | include 51.75000"), rows[1000] + "\n");
}

TEST_F(Tones, FileHoldsTheRowsOfTheSession) {
  for (const std::string& table : kTables) {
    for (const std::string& end : kEnds) {
      std::string rows = typed("show " + table + " " + end);
      EXPECT_THAT(linesOf(rows), testing::SizeIs(kRows));
      if (table == "SNRps") {  // a file has one blank less before the decibels
        for (size_t at = rows.find("  "); at != std::string::npos; at = rows.find("  ", at)) {
          at = rows.find("  ", at + 2);
          rows.erase(at, 1);
          at = rows.find('\n', at);
        }
      }
      EXPECT_THAT(typed("show " + table + " " + end + " table.txt"), IsEmpty());
      EXPECT_EQ(folder().read("table.txt"), rows) << table << " " << end;
    }
  }
}

TEST_F(Tones, LineValuesMatchTheTranscript) {
  std::string text;
  for (const std::string& end : kEnds) {
    text += exchange("show SATN " + end);
  }
  for (const std::string line :
       {"show SATN", "show phy params", "show phy params 1", "show afe-params", "show afe-params 0",
        "show afe-params 0 fe", "show afe-params 1 ne", "show afe-params 1 fe", "show ETR 0", "show ETR 1"}) {
    text += exchange(line);
  }
  expectStored(transcript("tones-line"), text);
}

TEST_F(Tones, PhyInfoMatchesTheTranscript) {
  constexpr size_t headings = 8;
  std::string text;
  for (const std::string end : {"0 ne", "0 fe", "1 ne", "1 fe"}) {
    text += abridgedExchange("show phy info " + end, headings);
    const std::string shown = typed("show phy info " + end);
    EXPECT_THAT(typed("show phy info " + end + " phy.txt"), IsEmpty());
    EXPECT_EQ(folder().read("phy.txt"), shown) << end;
  }
  EXPECT_EQ(typed("show phy info"), typed("show phy info 0 ne"));
  expectStored(transcript("tones-phy-info"), text);
}

TEST_F(Tones, MatricesMatchTheTranscript) {
  std::string text;
  for (const std::string matrix : {"canceler 0", "canceler 1", "precoder 0", "precoder 1"}) {
    text += exchange("show vectoring " + matrix + " matrix.txt");
    const std::string content = folder().read("matrix.txt");
    text += std::to_string(linesOf(content).size()) + " rows, fingerprint " + fingerprint(content) + "\n" +
            content.substr(0, content.find('\n') + 1);
  }
  expectStored(transcript("tones-vectoring"), text);
}

// Every command about the line, including those that write files.
std::vector<std::string> everyCommand(const std::string& line) {
  std::vector<std::string> commands;
  for (const std::string& table : kTables) {
    commands.push_back("show " + table + " " + line + " ds");
    commands.push_back("show " + table + " " + line + " us");
    commands.push_back("show " + table + " " + line + " us table.txt");
  }
  for (const std::string rest :
       {"SATN LINE ds", "SATN LINE us", "phy params LINE", "afe-params LINE", "afe-params LINE fe",
        "phy info LINE", "phy info LINE fe", "phy info LINE ne phy.txt", "vectoring canceler LINE matrix.txt",
        "vectoring precoder LINE matrix.txt", "ETR LINE"}) {
    std::string command = "show " + rest;
    command.replace(command.find("LINE"), 4, line);
    commands.push_back(command);
  }
  return commands;
}

// The lab on a board of the test's own.
class TonesOfBoard : public Tones {
 protected:
  using Tones::Tones;

  std::string everyExchange(const std::string& line) {
    std::string text;
    for (const std::string& command : everyCommand(line)) {
      text += exchange(command);
    }
    return text;
  }
};

class TonesOfIdleLines : public TonesOfBoard {
 protected:
  TonesOfIdleLines() : TonesOfBoard(boardWithLines("idle")) {}
};

TEST_F(TonesOfIdleLines, MatchTheTranscript) {
  expectStored(transcript("tones-idle"),
               everyExchange("0") + everyExchange("1") + exchange("show afe-params"));
}

class TonesWithoutChips : public TonesOfBoard {
 protected:
  TonesWithoutChips() : TonesOfBoard("[board]\ndevices = 0\n") {}
};

TEST_F(TonesWithoutChips, MatchTheTranscript) {
  expectStored(transcript("tones-absent"),
               everyExchange("0") + everyExchange("1") + exchange("show afe-params"));
}

class TonesWithFailures : public TonesOfBoard {
 protected:
  TonesWithFailures()
      : TonesOfBoard(
            boardWithLines("showtime") +
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE5001000\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE500C000\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE41800AC\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE4080000\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE4280000\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE4000000\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE4380000\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE5002000\ncount = 0\nerrno = \"EIO\"\n"
            "[[fault]]\ndevice = 0\nrequest = \"farend\"\ncount = 0\nerrno = \"ETIMEDOUT\"\n") {}
};

TEST_F(TonesWithFailures, MatchTheTranscript) {
  std::string text;
  for (const std::string& command : everyCommand("0")) {
    const std::string shown = exchange(command);
    text += linesOf(shown).size() > kRows
                ? "(gfast-cli)> " + command + "\n" + abridged(shown.substr(shown.find('\n') + 1))
                : shown;
  }
  expectStored(transcript("tones-faults"), text);
}

TEST_F(Tones, RefusedWordsMatchTheTranscript) {
  std::string text;
  for (const std::string command :
       {"BITSps", "BITS-RMCps", "SNRps", "ALNps", "HLOGps", "SATN", "phy params", "phy info", "afe-params",
        "ETR", "vectoring canceler", "vectoring precoder"}) {
    for (const std::string words :
         {"2 no/such/file", "0 xx", "0 us no/such/file", "0 ne no/such/file", "0 no/such/file", "0 1 2 3"}) {
      const bool works = command.starts_with("vectoring") && words == "0 xx";
      if (!works) {
        text += exchange("show " + command + " " + words);
      }
    }
  }
  expectStored(transcript("tones-refused"), text);
}

}  // namespace
