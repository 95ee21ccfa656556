// Each rule finds its fault on a virtual board that has it, and healthy lines of any length have no findings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "qvrcli/findings/findings.h"
#include "qvrcli/reading/collect_reading.h"
#include "support/simulated_console.h"
#include "virtual-board/description/board_file.h"

using namespace gfast;
using namespace gfast::board;
using namespace gfast::console;

namespace {

using testing::Contains;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

class SimulatedDriver final : public Driver {
 public:
  explicit SimulatedDriver(VirtualBoard& board) : board_(board) {}
  int open(int device) override { return board_.open(device); }
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    return board_.request(descriptor, code, request);
  }
  void close(int descriptor) override { board_.close(descriptor); }
  void rediscover() override { board_.rediscover(); }

 private:
  VirtualBoard& board_;
};

// What line 0 of a board has after so many seconds.
std::vector<Finding> findingsAfter(const BoardConfig& config, double seconds) {
  // Never destroyed: the library's notification thread may still ask at the end.
  auto* const console = new SimulatedConsole(config);
  console->start(*new SimulatedDriver(console->board()));
  console->pass(seconds);
  Reading reading = collectReading();
  LineReading& line = reading.lines.at(0);
  line.tones = collectTones(line.line);
  return findingsIn(line);
}

std::vector<Finding> findingsOf(const std::string& file, double seconds) {
  return findingsAfter(readBoardFile(BOARDS "/" + file), seconds);
}

// Each once, in the order of the alphabet.
std::set<std::string> kindsIn(const std::vector<Finding>& findings) {
  std::set<std::string> kinds;
  for (const Finding& finding : findings) {
    kinds.insert(finding.what);
  }
  return kinds;
}

struct Case {
  const char* name;
  const char* file;
  double seconds;
  std::set<std::string> kinds;
  const char* text;  // in one of the findings
};

class BoardWithFault : public testing::TestWithParam<Case> {};

TEST_P(BoardWithFault, HasItsFindingsAndNoOthers) {
  const std::vector<Finding> findings = findingsOf(GetParam().file, GetParam().seconds);
  EXPECT_EQ(kindsIn(findings), GetParam().kinds);
  if (!GetParam().kinds.empty()) {
    EXPECT_THAT(findings, Contains(Field(&Finding::text, HasSubstr(GetParam().text))));
  }
}

const Case kCases[] = {
    {"Tap",
     "faults/bridged-tap.toml",
     15,
     {"bridged-tap"},
     "about 5.0 m: the channel has holes at 10.3, 31.3, 52.4"},
    {"TapRemoved", "faults/bridged-tap-removed.toml", 15, {}, ""},
    {"TapThatComes", "line-tap.toml", 100, {"bridged-tap"}, "about 8.0 m"},
    {"LongLine", "faults/long-line.toml", 15, {}, ""},
    {"MaskedBand",
     "faults/masked-band.toml",
     15,
     {"mask"},
     "1513 tones silent (downstream), most of them from 5.2 to 82.8 MHz"},
    {"FailingPower",
     "faults/failing-power.toml",
     3599,
     {"power-loss"},
     "The subscriber's end announced 3 times within 59 min"},
    {"OtherFirmware", "faults/other-firmware.toml", 15, {"untold-tones"}, "SNR by tone (downstream)"},
    {"CalmJoint", "faults/bad-joint.toml", 890, {}, ""},
    {"WindyJoint", "faults/bad-joint.toml", 910, {"unfitting-loss"}, "at 5.3 MHz it is 19.8 dB more"},
    {"JointAndStation",
     "line-joint.toml",
     100,
     {"radio-station", "unfitting-loss"},
     "9.6 MHz (31 m broadcasting)"},
    {"Station",
     "line-radio.toml",
     100,
     {"radio-station"},
     "9.6 MHz (31 m broadcasting): -96 dBm/Hz of noise, SNR 38 dB lower"},
    {"StationGone", "line-radio.toml", 300, {}, ""},
    {"ThreeStations", "faults/radio-station.toml", 4000, {"radio-station"}, "7.3 MHz (41 m broadcasting)"},
    {"StationsAtABalancedPair", "faults/radio-station-balanced.toml", 4000, {}, ""},
    {"Impulses", "faults/impulses.toml", 1500, {"impulses"}, "Impulses (downstream)"},
    {"NoImpulses", "faults/impulses.toml", 1190, {}, ""},
    {"LampImpulses", "line-impulses.toml", 190, {"impulses"}, "Impulses (downstream)"},
    {"AlienCrosstalk", "faults/alien-crosstalk.toml", 700, {"wide-band-noise"}, "from 2.2 to 17.6 MHz"},
    {"Crosstalk", "line-crosstalk.toml", 130, {"wide-band-noise"}, "from 2.2 to 17.6 MHz"},
    {"LowNoise", "line-noise.toml", 100, {"wide-band-noise"}, "(downstream), from 2.2 to 24.9 MHz"},
    {"FlatNoise", "line-noise.toml", 410, {"wide-band-noise"}, "1929 of 1929 tones (downstream)"},
    {"Supply", "line-supply.toml", 100, {"wide-band-noise"}, "(downstream), from 2.2"},
    {"WetCable", "faults/wet-cable.toml", 3000, {"grown-loss"}, "36 dB at 50 MHz"},
    {"DryCable", "faults/wet-cable.toml", 500, {}, ""},
    {"WaterInRain", "line-water.toml", 1200, {"grown-loss"}, "33 dB at 50 MHz"},
    {"OtherCableWithin", "line-section.toml", 20, {}, ""},
};

INSTANTIATE_TEST_SUITE_P(FindingsOnBoards, BoardWithFault, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& board) { return board.param.name; });

struct Healthy {
  const char* cable;
  double length_m;
};

class HealthyLine : public testing::TestWithParam<Healthy> {};

TEST_P(HealthyLine, HasNoFindings) {
  BoardConfig config;
  config.loop.cable = GetParam().cable;
  config.loop.length_m = GetParam().length_m;
  EXPECT_THAT(kindsIn(findingsAfter(config, 30)), IsEmpty());
}

std::vector<Healthy> healthyLines() {
  std::vector<Healthy> lines;
  for (const char* cable : {"CAD55", "CAT5"}) {
    for (const double length_m : {0, 20, 50, 100, 150, 200, 250, 300, 400}) {
      lines.push_back({cable, length_m});
    }
  }
  return lines;
}

INSTANTIATE_TEST_SUITE_P(FindingsOnBoards, HealthyLine, testing::ValuesIn(healthyLines()),
                         [](const testing::TestParamInfo<Healthy>& line) {
                           return std::string(line.param.cable) + "Of" +
                                  std::to_string(static_cast<int>(line.param.length_m)) + "Metres";
                         });

}  // namespace
