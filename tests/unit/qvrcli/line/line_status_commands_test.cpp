// The lines at the console: given what the chips answer, when this is typed, this is printed.
#include "chip/device_information.h"
#include "qvrcli/config/config_commands.h"
#include "qvrcli/events/events.h"
#include "support/channel_records.h"
#include "support/chip_identity.h"
#include "support/dictionaries.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kNoLine = "invalid parameter - line number must be between 0..1";

// Both lines have their devices, which have answered once.
class TypedAtLines : public TypedConsole {
 protected:
  TypedAtLines() { enterBothLines(); }

  void SetUp() override {
    startDevice(0, LS_IDLE);
    startDevice(1, LS_IDLE);
  }

  void startDevice(int device, G9701_linkState_t state) {
    expect((known_[device] ? Script() : opens(device)) + readsIdentity(device, chipWithLine(state)));
    known_[device] = true;
    ASSERT_EQ(QVR_getDeviceInfo(device, nullptr), QVR_E_STATUS_OK);
    verify();
  }

  void expectUsage(const std::string& command, const std::string& usage, const std::string& tooMany) {
    EXPECT_THAT(typed(command + " ?"), ElementsAre(usage));
    EXPECT_THAT(typed(command + " " + tooMany), ElementsAre(usage));
    EXPECT_EQ(result(), CLI_OK);
  }

  void expectNoOtherLine(const std::string& command) {
    for (const std::string line : {"2", "-1"}) {
      EXPECT_THAT(typed(command + " " + line), ElementsAre(kNoLine));
      EXPECT_EQ(result(), CLI_OK);
    }
  }

 private:
  bool known_[QVR_K_MAX_DEVICES] = {};
};

using ShowLineState = TypedAtLines;
using ShowLineStatus = TypedAtLines;
using ShowLineConfig = TypedAtLines;
using ShowChannelStatus = TypedAtLines;
using ShowInitFailureCause = TypedAtLines;
using ShowNumbers = TypedAtLines;

TEST_F(ShowLineState, ReadsAllDevicesAnew) {
  expect(readsIdentity(0, chipWithLine(LS_SHOWTIME)) + readsIdentity(1, chipWithLine(LS_INIT_TRAIN)));
  EXPECT_THAT(typed("show line state"), ElementsAre("Line[00] show time      ", "Line[01] init train     "));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowLineState, ReadsTheDeviceOfOneLineAnew) {
  expect(readsIdentity(1, chipWithLine(LS_SILENT)));
  EXPECT_THAT(typed("show line state 1"), ElementsAre("Line[01] silent         "));
  expect(readsIdentity(0, chipWithLine(LS_PRE_DEACTIVATING1_E)));
  EXPECT_THAT(typed("show line state 0"), ElementsAre("Line[00] pre-deactivating 1"));
  expect(readsIdentity(0, chipWithLine(static_cast<G9701_linkState_t>(0xFFFF))));
  EXPECT_THAT(typed("show line state 0"), ElementsAre("Line[00] Unknown        "));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowLineState, StopsAtTheFirstDeviceThatDoesNotAnswer) {
  expect(readsIdentity(0, {}).failingAt(0, EIO));
  EXPECT_THAT(typed("show line state"), ElementsAre("Could not refresh the data"));
  EXPECT_EQ(result(), CLI_ERROR);
  expect(readsIdentity(0, {}) + readsIdentity(1, {}).failingAt(2, EIO));
  EXPECT_THAT(typed("show line state"),
              ElementsAre("Line[00] idle           ", "Could not refresh the data"));
  EXPECT_EQ(result(), CLI_ERROR);
  expect(readsIdentity(1, {}).failingAt(1, EIO));
  EXPECT_THAT(typed("show line state 1"), ElementsAre("Could not refresh the data"));
  EXPECT_EQ(result(), CLI_ERROR);
}

TEST_F(ShowLineState, FailsWithoutAMessageForALineWithoutADevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show line state 1"), IsEmpty());
  EXPECT_EQ(result(), CLI_ERROR);
  expect(readsIdentity(0, {}));
  EXPECT_THAT(typed("show line state"), ElementsAre("Line[00] idle           "));
  EXPECT_EQ(result(), CLI_ERROR);
}

TEST_F(ShowLineState, ShowsEachLineOnceWhenADeviceIsFoundAgain) {
  expect(closes(0) + closes(1) + rediscovers() + opens(0) + readsIdentity(0, {}) + opens(1) +
         readsIdentity(1, {}));
  QVR_rediscoverDevices();
  verify();
  expect(readsIdentity(1, {}).failingAt(0, ENODEV));
  QVR_getDeviceInfo(1, nullptr);
  verify();
  expect(readsIdentity(0, {}) + readsIdentity(1, {}));
  EXPECT_EQ(typed("show line state").size(), 2U);
}

TEST_F(ShowLineState, RefusesAnUnknownLine) {
  expectNoOtherLine("show line state");
  expectUsage("show line state", "show line state [<lineId>] : { * all lines }", "0 1");
}

Lines statusLines(const std::vector<std::string>& values) {
  const char* const labels[] = {
      "INITSFCAUSE           ", "INITLASTSIGNALds      ", "INITLASTSIGNALus      ", "LINK_STATE            ",
      "SNRMds                ", "SNRMus                ", "UPBOKLE               ", "UPBOKLE-R             ",
      "ACTATPds              ", "ACTATPus              ", "SNRM_RMCds            ", "SNRM_RMCus            ",
      "EWL                   ", "EWL                   ", "DTAMds                ", "DTAMdsEVTCNT          "};
  Lines lines;
  for (size_t i = 0; i < std::size(labels); i++) {
    lines.push_back(labels[i] + values.at(i));
  }
  return lines;
}

TEST_F(ShowLineStatus, ShowsValuesThatAnIdleLineDoesNotHave) {
  GFAST_FDU_RAW_COUNTERS_S fdu{};
  fdu.UPBOKLE = 112;
  fdu.UPBOKLE_R = 113;
  fdu.ACTATPds = -34;
  fdu.TimeGapCorrection = 100;
  expect(readsFdu(0, fdu));
  EXPECT_EQ(typed("show line status"), statusLines({"0", "0", "0", "L3", "-512", "-512", "112", "113", "-34",
                                                    "-512", "0", "0", "209", "209", "0", "0"}));
  EXPECT_EQ(result(), CLI_OK);
}

// Byte 0 of the chip's word is the last signal downstream, byte 2 the one upstream.
TEST_F(ShowLineStatus, ShowsHowTheLastInitialisationOfANetworkSideLineEnded) {
  ChipIdentity chip = chipWithLine(LS_IDLE);
  chip.setWord(DEV_INF_INIT_FAILURE_CAUSE, 5);
  chip.setWord(DEV_INF_LAST_SIGNAL, 0x00160011);
  expect(readsIdentity(0, chip));
  ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  expect(readsFdu(0, {}));
  const Lines shown = typed("show line status");
  ASSERT_GE(shown.size(), 3U);
  EXPECT_EQ(shown[0], "INITSFCAUSE           5");
  EXPECT_EQ(shown[1], "INITLASTSIGNALds      17");
  EXPECT_EQ(shown[2], "INITLASTSIGNALus      22");
}

TEST_F(ShowLineStatus, ShowsBothEndsOfALineInShowtime) {
  startDevice(1, LS_SHOWTIME);
  GFAST_FRAMER_RAW_COUNTERS_S framer{};
  framer.snrMargin = 63;
  framer.rmcSnrMargin = static_cast<uint32_t>(-5);
  framer.dtaCurrentMds = 255;
  framer.dtaMdsExngCnt = 0x80000000;
  GFAST_FDU_RAW_COUNTERS_S fdu{};
  fdu.TimeGapCorrection = 545;
  expect(readsFramer(1, framer) + asksMeasurements(1) + readsFdu(1, fdu));
  EXPECT_EQ(typed("show line status 1"),
            statusLines({"0", "0", "0", "L0N", "82", "63", "0", "0", "0", "-75", "91", "-5", "4194303",
                         "4194303", "255", "-2147483648"}));
}

TEST_F(ShowLineStatus, ReportsTheResultOfTheLastRead) {
  expect(reads(0, 0xE2040000, Bytes(40)).fails(EIO));
  EXPECT_THAT(typed("show line status 0"), ElementsAre("Failed getting line status (12)"));
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show line status 1"), ElementsAre("Failed getting line status (17)"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowLineStatus, RefusesAnUnknownLine) {
  expectNoOtherLine("show line status");
  expectUsage("show line status", "show line status [<lineId>] : { 0 }", "0 1");
}

// These chips have one parameter, the upstream margin.
class ShowLineConfigOfTheChip : public ShowLineConfig {
 protected:
  void SetUp() override {
    ShowLineConfig::SetUp();
    expect(readsDictionary(8, {{0, 0, 0}, {PARAMS_usMargin, 2, 4}}));
    QVR_initParams();
    verify();
  }

  static Script readsConfig(int device, uint8_t usMargin) {
    return reads(0, kArea, Bytes(8)) + reads(device, kArea + 4, {usMargin, 0});
  }
};

TEST_F(ShowLineConfigOfTheChip, DoesNotChangeTheRecordOfConfigurationMode) {
  configParams.noiseMarginProfile.TARSNRMus = 77;
  expect(readsConfig(1, 61));
  EXPECT_THAT(typed("show line config 1"), Contains("TARSNRMus                                 61"));
  EXPECT_EQ(result(), CLI_OK);
  typed("configure");
  EXPECT_THAT(typed("show"), Contains("TARSNRMus                                 77"));
}

TEST_F(ShowLineConfigOfTheChip, IsThatOfTheFirstLineByDefault) {
  configParams.retransmissionProfile.DELAYMAXds = 100;
  expect(readsConfig(0, 60));
  const Lines shown = typed("show line config");
  EXPECT_THAT(shown, Contains("TARSNRMus                                 60"));
  EXPECT_THAT(shown, Contains("DELAYMAXds                                0"));
}

TEST_F(ShowLineConfigOfTheChip, CannotBeReadWithoutItsArea) {
  expect(reads(0, kArea, Bytes(8)).fails(EIO));
  EXPECT_THAT(typed("show line config"), ElementsAre("QVR_getLineConfig failed"));
  EXPECT_EQ(result(), 1);
}

TEST_F(ShowLineConfig, RefusesAnUnknownLine) {
  expectNoOtherLine("show line config");
  expectUsage("show line config", "show line config [<line-id>] : { 0 }", "0 1");
}

const auto kReceived = ElementsAre("NDR              4100000000", "ETR              110001",
                                   "GDR              110001", "ATTNDR           130003",
                                   "DTU_NFEC         255", "DTU_RFEC         16", "DTU_Q            4");
const auto kTransmitted = ElementsAre("NDR              420002", "ETR              410002",
                                      "GDR              410002", "ATTNDR           500000",
                                      "DTU_NFEC         144", "DTU_RFEC         16", "DTU_Q            16");

TEST_F(ShowChannelStatus, AtTheNetworkSideUpstreamIsReceived) {
  startDevice(0, LS_SHOWTIME);
  for (const std::string words : {"", " 0", " 0 us", " 0 US"}) {
    expect(readsReceived(0));
    EXPECT_THAT(typed("show channel status" + words), kReceived) << words;
  }
  for (const std::string words : {" 0 ds", " 0 DS"}) {
    expect(readsTransmitted(0));
    EXPECT_THAT(typed("show channel status" + words), kTransmitted) << words;
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowChannelStatus, AtTheSubscriberSideUpstreamIsTransmitted) {
  startDevice(1, LS_SHOWTIME);
  expect(readsTransmitted(1));
  EXPECT_THAT(typed("show channel status 1"), kTransmitted);
  expect(readsReceived(1));
  EXPECT_THAT(typed("show channel status 1 ds"), kReceived);
}

TEST_F(ShowChannelStatus, ReportsAFailedRead) {
  expect(readsReceived(0).failingAt(0, EIO));
  EXPECT_THAT(typed("show channel status"), ElementsAre("QVR_getChannelStatus failed"));
  expect(readsDerived(0, derived()));  // the far end of a line that is down is not asked
  EXPECT_THAT(typed("show channel status 0 ds"), ElementsAre("QVR_getChannelStatus failed"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowChannelStatus, RefusesAnUnknownDirectionAndAnUnknownLine) {
  for (const std::string word : {"down", "Us", "uS", "d", "dss"}) {
    EXPECT_THAT(typed("show channel status 0 " + word),
                ElementsAre("show channel-status [<line-id>] [(us | ds)]"));
  }
  EXPECT_THAT(typed("show channel status 2 down"), ElementsAre(kNoLine));
  expectNoOtherLine("show channel status");
  expectUsage("show channel status", "show channel status [<line-id>] [us | ds] : { 0, us }", "0 us 1");
}

TEST_F(ShowInitFailureCause, IsReadAnewAtTheNetworkSide) {
  ChipIdentity chip;
  chip.setWord(DEV_INF_INIT_FAILURE_CAUSE, E_INITSFCAUSE_NO_FAR_END_FTU_DETECTED);
  chip.setWord(DEV_INF_LAST_SIGNAL, 0x00070005);
  for (const std::string words : {"", " 0"}) {
    expect(readsIdentity(0, chip));
    EXPECT_THAT(typed("show init-failure-cause" + words),
                ElementsAre("INITSFCAUSE = 4", "INITLASTSIGNALds = 5", "INITLASTSIGNALus = 7"));
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowInitFailureCause, FailsAtTheSubscriberSide) {
  EXPECT_THAT(typed("show init-failure-cause 1"), ElementsAre("Failed getting information from device"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowInitFailureCause, ReportsADeviceThatDoesNotAnswer) {
  expect(readsIdentity(0, {}).failingAt(1, EIO));
  EXPECT_THAT(typed("show init-failure-cause"), ElementsAre("Failed getting information from device"));
}

TEST_F(ShowInitFailureCause, RefusesAnUnknownLine) {
  expectNoOtherLine("show init-failure-cause");
  expectUsage("show init-failure-cause", "show init-failure-cause [<lineId>]", "0 1");
}

TEST_F(ShowNumbers, CountDevicesAndTheirLines) {
  EXPECT_THAT(typed("show number devices"), ElementsAre("2"));
  EXPECT_THAT(typed("show number lines"), ElementsAre("lines per device = 1, total = 2 "));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowNumbers, CountRebootNotifications) {
  EXPECT_THAT(typed("show number reboots"), ElementsAre("0"));
  ChipIdentity configuring;
  configuring.sbr |= 0x8000;
  expect((readsIdentity(0, configuring)).times(2));
  handleRebootEvent();
  handleRebootEvent();
  EXPECT_THAT(typed("show number reboots"), ElementsAre("2"));
}

TEST_F(ShowNumbers, TakeNoWords) {
  for (const std::string command : {"show number devices", "show number lines", "show number reboots"}) {
    expectUsage(command, command, "0");
  }
}

TEST(ShowNumbersWithoutDevices, AreZero) {
  CapturedConsole console;
  EXPECT_THAT(console.run("show number devices"), ElementsAre("0"));
  EXPECT_THAT(console.run("show number lines"), ElementsAre("lines per device = 0, total = 0 "));
  EXPECT_THAT(console.run("show line state"), IsEmpty());
  EXPECT_EQ(console.result(), CLI_OK);
}

}  // namespace
