// The tables by subcarrier at the console: given the chips' values for two subcarriers, when this is typed,
// this is printed or written.
#include <functional>

#include "unit/qvrcli/tones/tone_requests.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kRows = 2048;

// A row as the console prints it where a subcarrier has no value.
std::string row(const char* format, int subcarrier) {
  char text[64];
  std::snprintf(text, sizeof text, format, subcarrier * 0.05175);
  return text;
}

// The table: these rows of subcarriers 100 and 101 between those without values.
Lines table(const std::function<std::string(int)>& empty, const std::string& of100,
            const std::string& of101) {
  Lines rows;
  for (int i = 0; i < kRows; i++) {
    rows.push_back(i == 100 ? of100 : i == 101 ? of101 : empty(i));
  }
  return rows;
}

Lines bitsTable(const std::string& bits) {
  return table([](int i) { return std::to_string(i) + row("  %.5f  0", i); }, "100  5.17500  " + bits,
               "101  5.22675  0");
}

// A chip sends 5 bits and receives 9.
Lines bitsTableOf(int device, bool downstream) {
  return bitsTable(downstream == (device == 0) ? "5" : "9");
}

class ToneCommands : public ToneConsole {
 public:
  // The requests of each table, for the line of a device in a direction.
  Script bitsOf(int device, bool downstream) {
    const bool sent = downstream == (device == 0);
    return findsTones(device) + readsSet(device, sent) + readsLoading(device, sent);
  }
  Script rmcBitsOf(int device, bool downstream) {
    const bool sent = downstream == (device == 0);
    const uint32_t index = sent ? 0xE500B000 : 0xE500C000;
    const uint32_t area1 = sent ? 0xE5007000 : 0xE5008000;
    Bytes entries(4096, 0xFF);
    std::ranges::copy(loading(sent), entries.begin());
    return findsTones(device) + readsSet(device, sent) + readsWord(device, index, 3) +
           readsInPieces(device, area1, entries) + readsWord(device, index, 3);
  }
  Script snrOf(int device, bool downstream) {
    const bool farReceives = downstream == (device == 0);
    return findsTones(device) +
           (farReceives ? readsSet(device, true) + asksFarEndSnr(device) : readsEnergies(device)) +
           readsSet(device, (!downstream || device == 1) != (device == 0));
  }
  Script noiseOf(int device, bool downstream) {
    const bool farReceives = downstream == (device == 0);
    return findsTones(device) + readsReceived(device, farReceives) +
           (farReceives ? readsSet(device, true) + asksFarEndSnr(device) : readsEnergies(device)) +
           readsSet(device, device == 0);
  }
  Script magnitudeOf(int device, bool downstream) {
    const bool farReceives = downstream == (device == 0);
    return findsTones(device) + readsSent(device, !farReceives) + readsReceived(device, farReceives) +
           readsSet(device, device == 1);
  }
  Script attenuationOf(int device, bool downstream) {
    return magnitudeOf(device, downstream) + readsSentAmplitudes(device, true);
  }

  // A command, and its requests in the direction that this end receives: none of them is an exchange, which
  // would be tried again.
  struct Command {
    std::string name;
    std::string failure;
    std::function<Script(int device, bool downstream)> asks;
  };
  std::vector<Command> commands() {
    const auto asking = [this](Script (ToneCommands::*asks)(int, bool)) {
      return [this, asks](int device, bool downstream) { return (this->*asks)(device, downstream); };
    };
    return {
        {"BITSps", "Error getting bit-loading table (BITSps) from ", asking(&ToneCommands::bitsOf)},
        {"BITS-RMCps", "Error getting bit-loading table (BITSRMCps) from ", asking(&ToneCommands::rmcBitsOf)},
        {"SNRps", "Error getting SNR table (SNRps) from ", asking(&ToneCommands::snrOf)},
        {"ALNps", "Error getting ALNps table from ", asking(&ToneCommands::noiseOf)},
        {"HLOGps", "Error getting HLOGps table from ", asking(&ToneCommands::magnitudeOf)},
        {"SATN", "Error getting SATN from ", asking(&ToneCommands::attenuationOf)}};
  }

  // Types the command for both directions of both lines, and expects the requests.
  void expectAtEveryEnd(const std::string& command, Script (ToneCommands::*asks)(int, bool),
                        const std::function<void(const Lines&, int, bool)>& check) {
    for (const int device : {0, 1}) {
      for (const std::string direction : {"ds", "us", "DS", "US"}) {
        const bool downstream = direction == "ds" || direction == "DS";
        expect((this->*asks)(device, downstream));
        SCOPED_TRACE(command + " " + std::to_string(device) + " " + direction);
        check(typed("show " + command + " " + std::to_string(device) + " " + direction), device, downstream);
        EXPECT_EQ(result(), CLI_OK);
        verify();
      }
    }
  }
};

TEST_F(ToneCommands, ShowBitsOfDataSymbols) {
  expectAtEveryEnd("BITSps", &ToneCommands::bitsOf, [](const Lines& shown, int device, bool downstream) {
    EXPECT_EQ(shown, bitsTableOf(device, downstream));
  });
}

TEST_F(ToneCommands, ShowBitsOfRmcSymbols) {
  expectAtEveryEnd("BITS-RMCps", &ToneCommands::rmcBitsOf,
                   [](const Lines& shown, int device, bool downstream) {
                     EXPECT_EQ(shown, bitsTableOf(device, downstream));
                   });
}

TEST_F(ToneCommands, ShowSnrAsEvenCodesAndDecibels) {
  expectAtEveryEnd("SNRps", &ToneCommands::snrOf, [](const Lines& shown, int, bool) {
    EXPECT_EQ(shown, table([](int i) { return row("%.5f  255  95.5", i); }, "5.17500  204  70.0",
                           "5.22675  84  10.0"));
  });
}

TEST_F(ToneCommands, ShowTheNoiseBelowTheSignal) {
  expectAtEveryEnd("ALNps", &ToneCommands::noiseOf, [](const Lines& shown, int device, bool downstream) {
    // The far end reports its SNR in steps of half a decibel.
    const bool farReceives = downstream == (device == 0);
    EXPECT_EQ(shown, table([](int i) { return row("%.5f 255 -160.5", i); },
                           farReceives ? "5.17500 188 -127.0" : "5.17500 190 -128.0",
                           farReceives ? "5.22675 44 -55.0" : "5.22675 46 -56.0"));
  });
}

TEST_F(ToneCommands, ShowTheMagnitudeOfTheChannel) {
  expectAtEveryEnd("HLOGps", &ToneCommands::magnitudeOf, [](const Lines& shown, int, bool) {
    EXPECT_EQ(shown,
              table([](int i) { return row("%.5f 1023 -96.3", i); }, "5.17500 80 -2.0", "5.22675 -40 10.0"));
  });
}

TEST_F(ToneCommands, ShowTheAttenuationOfTheWholeBand) {
  // The mean power of -2 dB and 10 dB is 7.26 dB above the sent power.
  expectAtEveryEnd("SATN", &ToneCommands::attenuationOf,
                   [](const Lines& shown, int, bool) { EXPECT_THAT(shown, ElementsAre("-7.3")); });
}

TEST_F(ToneCommands, TakeLine0AndUpstreamByDefault) {
  for (const Command& command : commands()) {
    const bool isNumber = command.name == "SATN";
    for (const std::string words : {"", " 0", " 0 us"}) {
      expect(command.asks(0, false));
      EXPECT_EQ(typed("show " + command.name + words).size(), isNumber ? 1U : size_t{kRows}) << command.name;
      verify();
    }
  }
}

TEST_F(ToneCommands, WriteIntoAFileAndPrintNothing) {
  const auto written = [this](const std::string& command) {
    EXPECT_THAT(typed("show " + command + " 0 us " + file_.file()), IsEmpty()) << command;
    verify();
    return file_.content();
  };
  expect(bitsOf(0, false));
  EXPECT_EQ(written("BITSps"), fileOf(bitsTable("9")));
  expect(rmcBitsOf(0, false));
  EXPECT_EQ(written("BITS-RMCps"), fileOf(bitsTable("9")));
  expect(snrOf(0, false));
  EXPECT_EQ(written("SNRps"), fileOf(table([](int i) { return row("%.5f  255 95.5", i); },
                                           "5.17500  204 70.0", "5.22675  84 10.0")));
  expect(noiseOf(0, false));
  EXPECT_EQ(written("ALNps"), fileOf(table([](int i) { return row("%.5f 255 -160.5", i); },
                                           "5.17500 190 -128.0", "5.22675 46 -56.0")));
  expect(magnitudeOf(0, false));
  EXPECT_EQ(written("HLOGps"), fileOf(table([](int i) { return row("%.5f 1023 -96.3", i); },
                                            "5.17500 80 -2.0", "5.22675 -40 10.0")));
}

TEST_F(ToneCommands, ReportTheDirectionOfAFailedRead) {
  for (const Command& command : commands()) {
    for (const bool downstream : {false, true}) {
      // Line 0 receives upstream, line 1 downstream.
      const int device = downstream ? 1 : 0;
      const std::string direction = downstream ? "ds" : "us";
      const size_t requests = command.asks(device, downstream).size();
      // The last request of a bit loading may fail: that is not reported.
      for (size_t i = 0; i < requests - (command.name == "BITSps" ? 1 : 0); i++) {
        SCOPED_TRACE(command.name + " " + direction + ", request " + std::to_string(i));
        expect(command.asks(device, downstream).failingAt(i, EIO));
        const std::string line = std::to_string(device) + " " + direction;
        EXPECT_THAT(typed("show " + command.name + " " + line), ElementsAre(command.failure + direction));
        EXPECT_EQ(result(), CLI_OK);
        verify();
      }
    }
  }
}

TEST_F(ToneCommands, ShowZeroBitsWhenOnlyTheLoadingCannotBeRead) {
  expect(bitsOf(0, false));
  typed("show BITSps");
  expect(bitsOf(1, false).failingAt(bitsOf(1, false).size() - 1, EIO));
  EXPECT_EQ(typed("show BITSps 1"), bitsTable("0"));
}

TEST_F(ToneCommands, ReportAFarEndThatRefuses) {
  expect(findsTones(0) + readsSet(0, true) + asksFarEndSnr(0, {0xFF}));
  EXPECT_THAT(typed("show SNRps 0 ds"), ElementsAre("Error getting SNR table (SNRps) from ds"));
}

TEST_F(ToneCommands, LeaveAnEmptyFileAfterAFailedRead) {
  expect(bitsOf(0, false));
  typed("show BITSps 0 us " + file_.file());
  EXPECT_EQ(file_.content(), fileOf(bitsTable("9")));
  for (const Command& command : commands()) {
    if (command.name != "SATN") {
      expect(command.asks(0, false).failingAt(1, EIO));
      EXPECT_THAT(typed("show " + command.name + " 0 us " + file_.file()),
                  ElementsAre(command.failure + "us"));
      EXPECT_EQ(file_.content(), "");
    }
  }
}

TEST_F(ToneCommands, ReportALineThatIsNotUp) {
  for (const Command& command : commands()) {
    expect(readsIdentity(0, chipWithLine(LS_INIT_TRAIN)));
    EXPECT_THAT(typed("show " + command.name + " 0 ds"), ElementsAre(command.failure + "ds"));
    verify();
  }
}

TEST_F(ToneCommands, ReportALineWithoutADevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  for (const Command& command : commands()) {
    EXPECT_THAT(typed("show " + command.name + " 1"), ElementsAre(command.failure + "us"));
  }
}

TEST_F(ToneCommands, CheckTheLineThenTheDirectionThenTheFile) {
  const std::string noFile = file_.path() + "/no/such/file";
  for (const Command& command : commands()) {
    const std::string show = "show " + command.name;
    for (const std::string line : {"2", "-1", "99999999999", "2 xx"}) {
      EXPECT_THAT(typed(show + " " + line),
                  ElementsAre("invalid parameter - line number must be between 0..1"));
    }
    for (const std::string direction : {"xx", "Us", "dS", "uss", "d", "ne"}) {
      EXPECT_THAT(typed(show + " 0 " + direction), ElementsAre("invalid parameter - must enter ds or us"));
    }
    if (command.name != "SATN") {
      EXPECT_THAT(typed(show + " 0 xx " + noFile), ElementsAre("invalid parameter - must enter ds or us"));
      EXPECT_THAT(typed(show + " 0 us " + noFile), ElementsAre("Could not open file " + noFile));
      EXPECT_THAT(typed(show + " 0 us " + file_.path()), ElementsAre("Could not open file " + file_.path()));
    }
    EXPECT_EQ(result(), CLI_OK);
  }
}

TEST_F(ToneCommands, ReportAFileThatCannotBeWritten) {
  expect(bitsOf(0, false));
  EXPECT_THAT(typed("show BITSps 0 us /dev/full"), ElementsAre("Could not write file /dev/full"));
}

TEST_F(ToneCommands, ShowTheirUsage) {
  const std::pair<std::string, std::string> usages[] = {
      {"BITSps", "show BITSps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"},
      {"BITS-RMCps", "show BITS-RMCps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"},
      {"SNRps", "show SNRps [<lineId>] [ds | us] [<filename>] : { 0, us, <NONE> }"},
      {"ALNps", "show ALNps [<lineId>] [ds | us] [<filename>]: { 0, us, <NONE> }"},
      {"HLOGps", "show HLOGps [<lineId>] [ds | us] [<filename>]"},
      {"SATN", "show SATN [<lineId>] [ds | us]"}};
  for (const auto& [command, usage] : usages) {
    for (const std::string words : {" ?", " 0 ?", " 0 us file 4"}) {
      EXPECT_THAT(typed("show " + command + words), ElementsAre(usage));
    }
  }
}

}  // namespace
