// What is wrong with the lines of the example boards shows in the console.
#include <gtest/gtest.h>

#include <fstream>
#include <ostream>
#include <sstream>
#include <string>

#include "console/lab_on_board.h"

namespace {

// The board as it is while its faults are there: without their times, and in showtime.
std::string exampleWithFaults(const std::string& name) {
  std::ifstream file(std::string(BOARD_EXAMPLES) + "/" + name);
  std::string board;
  for (std::string line; std::getline(file, line);) {
    const std::string key = line.substr(0, line.find(' '));
    if (key != "at_s" && key != "for_s" && key != "every_s") {
      board += (key == "grows_s" ? "grows_s = 0" : line) + "\n";
    }
  }
  return board + boardWithLines("showtime");
}

// The same loop, and nothing wrong with it.
std::string exampleWithoutFaults(const std::string& name) {
  const std::string board = exampleWithFaults(name);
  const size_t faults = board.find("[[line_fault]]");
  return board.substr(0, faults) + boardWithLines("showtime");
}

// The last word of a subcarrier's row.
double valueOf(const std::string& table, int subcarrier) {
  std::istringstream lines(table);
  std::string line;
  for (int i = 0; i <= subcarrier; i++) {
    std::getline(lines, line);
  }
  std::istringstream words(line);
  double value = 0;
  for (double word = 0; words >> word;) {
    value = word;
  }
  return value;
}

struct Sight {
  const char* board;
  const char* command;
  int subcarrier;
  double least_db;  // how the value changes
  double most_db;

  friend void PrintTo(const Sight& sight, std::ostream* out) {
    *out << sight.board << ": " << sight.command << ", subcarrier " << sight.subcarrier;
  }
};

class LineFaultShows : public LabOnBoard, public testing::WithParamInterface<Sight> {};

TEST_P(LineFaultShows, InTheTablesOfTheConsole) {
  const Sight& sight = GetParam();
  start(exampleWithoutFaults(sight.board));
  const double without = valueOf(typed(sight.command), sight.subcarrier);
  start(exampleWithFaults(sight.board));
  const double with = valueOf(typed(sight.command), sight.subcarrier);
  EXPECT_GE(with - without, sight.least_db) << without << " dB without, " << with << " with";
  EXPECT_LE(with - without, sight.most_db) << without << " dB without, " << with << " with";
}

constexpr Sight kSights[] = {
    // A quarter wavelength of 8 m, and a half.
    {"line-tap.toml", "show HLOGps 1 ds", 126, -60, -15},
    {"line-tap.toml", "show HLOGps 1 ds", 253, -3, 1},
    {"line-joint.toml", "show HLOGps 1 ds", 60, -6, -2},
    {"line-joint.toml", "show ALNps 1 ds", 185, 30, 80},
    {"line-radio.toml", "show ALNps 1 ds", 185, 30, 60},
    {"line-radio.toml", "show ALNps 1 ds", 1000, -1, 1},
    {"line-noise.toml", "show ALNps 1 ds", 97, 20, 40},
    {"line-noise.toml", "show ALNps 0 us", 1500, -1, 1},  // too far away
    {"line-crosstalk.toml", "show ALNps 1 ds", 300, 5, 60},
    {"line-crosstalk.toml", "show ALNps 0 us", 300, 10, 60},
    {"line-water.toml", "show HLOGps 1 ds", 1000, -15, -2},
    {"line-section.toml", "show HLOGps 1 ds", 1500, 2, 12},
    {"line-supply.toml", "show ALNps 1 ds", 50, 30, 60},
};
INSTANTIATE_TEST_SUITE_P(Examples, LineFaultShows, testing::ValuesIn(kSights));

class LineFaultCounts : public LabOnBoard {};

TEST_F(LineFaultCounts, UnitsThatImpulsesCorrupt) {
  const auto bad = [this] {
    const std::string counters = typed("show gfast-counters 1 ne");
    const std::string name = "numOfBadRxDTUs = ";
    const size_t at = counters.find(name);
    return at == std::string::npos ? -1 : std::stol(counters.substr(at + name.size()));
  };
  start(exampleWithFaults("line-impulses.toml"));
  const long before = bad();
  session().readFor(std::chrono::seconds(1));
  EXPECT_GT(bad() - before, 300);
}

}  // namespace
