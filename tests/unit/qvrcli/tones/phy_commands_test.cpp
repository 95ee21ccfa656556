// The physical layer at the console: given the chips' values for two subcarriers and for their front ends,
// this is printed or written.
#include "unit/qvrcli/tones/tone_requests.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kNoLine = "invalid parameter - line number must be between 0..1";

class ShowPhyParams : public ToneConsole {};

TEST_F(ShowPhyParams, ShowsTheProcessedSubcarriers) {
  for (const std::string words : {"", " 0", " 1"}) {
    expect(findsTones(words == " 1" ? 1 : 0));
    EXPECT_THAT(typed("show phy params" + words),
                ElementsAre("", "firstTone             100", "numProcessedTones     2"));
    EXPECT_EQ(result(), CLI_OK);
    verify();
  }
}

TEST_F(ShowPhyParams, ShowsWhatTheChipSaysBeyondTheLastSubcarrierToo) {
  expect(findsLineUp(0) + readsFraming(0, 2040, 70000));
  EXPECT_THAT(typed("show phy params"),
              ElementsAre("", "firstTone             2040", "numProcessedTones     70000"));
}

TEST_F(ShowPhyParams, ReportsALineThatIsNotUpInItsOwnWords) {
  expect(readsIdentity(0, chipWithLine(LS_SILENT)));
  EXPECT_THAT(typed("show phy params"), ElementsAre("Line 0 is in not SHOWTIME"));
  expect(findsLineUp(1).failingAt(0, EIO));
  EXPECT_THAT(typed("show phy params 1"), ElementsAre("Line 1 is in not SHOWTIME"));
}

TEST_F(ShowPhyParams, ReportsTheResultOfAFailedRead) {
  expect(findsLineUp(0) + readsFraming(0).fails(EIO));
  EXPECT_THAT(typed("show phy params"), ElementsAre("Failed to read PHY params (error=12)"));
}

TEST_F(ShowPhyParams, ChecksItsArguments) {
  EXPECT_THAT(typed("show phy params 2"), ElementsAre(kNoLine));
  for (const std::string words : {" ?", " 0 1"}) {
    EXPECT_THAT(typed("show phy params" + words), ElementsAre("show phy params [<line-id>] : { 0 }"));
  }
}

class ShowAfeParams : public ToneConsole {
 protected:
  static Script readsAfe(int device, bool far = false) {
    return findsTones(device) + readsFrontEnd(device, far);
  }
  const Lines kShown{"", "RxGain                10.00000", "aceOnOff              0"};
};

TEST_F(ShowAfeParams, ShowsGainAndCancellerOfALine) {
  for (const std::string words : {"0", "0 ne", "0 NE"}) {
    expect(readsAfe(0));
    EXPECT_EQ(typed("show afe-params " + words), kShown);
    verify();
  }
  for (const std::string words : {"1 fe", "1 FE"}) {
    expect(readsAfe(1, true));
    EXPECT_EQ(typed("show afe-params " + words), kShown);
    verify();
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowAfeParams, ShowsOneRowPerLineForAllLines) {
  expect(readsAfe(0) + readsAfe(1));
  EXPECT_THAT(typed("show afe-params"), ElementsAre("Line[00] 10.00000 0", "Line[01] 10.00000 0"));
}

TEST_F(ShowAfeParams, ShowsTheOtherLinesWhenOneCannotBeRead) {
  expect(readsIdentity(0, chipWithLine(LS_IDLE)) + readsAfe(1));
  EXPECT_THAT(typed("show afe-params"),
              ElementsAre("Failed getting AFE params for line 0", "Line[01] 10.00000 0"));
}

TEST_F(ShowAfeParams, ReportsTheLineThatCannotBeRead) {
  for (const bool far : {false, true}) {
    for (size_t i = 0; i < readsAfe(1, far).size(); i++) {
      expect(readsAfe(1, far).failingAt(i, EIO));
      EXPECT_THAT(typed(far ? "show afe-params 1 fe" : "show afe-params 1"),
                  ElementsAre("Failed getting AFE params for line 1"));
      verify();
    }
  }
}

TEST_F(ShowAfeParams, ChecksTheEndThenTheLine) {
  for (const std::string end : {"xx", "Ne", "fee", "us"}) {
    EXPECT_THAT(typed("show afe-params 0 " + end), ElementsAre("parameter must be ne or fe"));
  }
  EXPECT_THAT(typed("show afe-params 2 xx"), ElementsAre("parameter must be ne or fe"));
  EXPECT_THAT(typed("show afe-params 2 fe"), ElementsAre(kNoLine));
  EXPECT_THAT(typed("show afe-params -1"), ElementsAre(kNoLine));
  for (const std::string words : {" ?", " 0 ne 1"}) {
    EXPECT_THAT(typed("show afe-params" + words),
                ElementsAre("show afe-params [<lineId>] [ne | fe] : { <ALL> ne  }"));
  }
}

class ShowPhyInfo : public ToneConsole {
 protected:
  // The reads for each end: first the loading of what it sends, then of what it receives.
  static Script readsNearEnd(int device) {
    return findsTones(device) +                                                        //
           findsTones(device) + readsSet(device, true) + readsLoading(device, true) +  //
           findsTones(device) + readsSet(device, false) + readsLoading(device, false) + findsTones(device) +
           readsEnergies(device) +  //
           findsTones(device) + readsReceived(device);
  }
  static Script readsFarEnd(int device) {
    return findsTones(device) +                                                          //
           findsTones(device) + readsSet(device, false) + readsLoading(device, false) +  //
           findsTones(device) + readsSet(device, true) + readsLoading(device, true) +    //
           readsSet(device, true) + findsTones(device) + readsSet(device, true) + asksFarEndSnr(device) +
           findsTones(device) + readsReceived(device, true);
  }

  // The sections, with these rows of subcarriers 100 and 101.
  static Lines shown(const std::string& of100, const std::string& of101) {
    Lines rows{"# PHY Params:",      "# firstTone\tnumProcessedTones",
               "100\t\t2",           "# AFE Params:",
               "# rxGain\taceOnOff", "10.00000\t\t0",
               "# PHY Info:",        "# Frequency\tBITS(tx) BITS(rx) SNR\t\tFEQ(calib)\tFEQ"};
    for (int i = 0; i < 2048; i++) {
      char empty[80];
      std::snprintf(empty, sizeof empty, "%09.5f\t0\t0\t0.00000\t0.00000\t0.00000", i * 0.05175);
      rows.push_back(i == 100 ? of100 : i == 101 ? of101 : empty);
    }
    return rows;
  }
  const Lines kNearEnd = shown("005.17500\t5\t9\t70.20600\t-57.51304\t-57.76120",
                               "005.22675\t0\t0\t10.29999\t-45.47180\t-45.72000");
  // It sends what this end receives, and reports its SNR in steps of half a decibel.
  const Lines kFarEnd = shown("005.17500\t9\t5\t69.50000\t-57.51304\t-57.76120",
                              "005.22675\t0\t0\t10.00000\t-45.47180\t-45.72000");
};

TEST_F(ShowPhyInfo, ShowsTheNearEnd) {
  for (const std::string words : {"", " 0", " 0 ne", " 0 NE", " 1"}) {
    expect(readsNearEnd(words == " 1" ? 1 : 0));
    EXPECT_EQ(typed("show phy info" + words), kNearEnd) << words;
    verify();
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowPhyInfo, ShowsTheFarEnd) {
  for (const std::string words : {" 0 fe", " 0 FE", " 1 fe"}) {
    expect(readsFarEnd(words == " 1 fe" ? 1 : 0));
    EXPECT_EQ(typed("show phy info" + words), kFarEnd) << words;
    verify();
  }
}

// The far end receives on subcarrier 101 only, and its SNR table begins there.
TEST_F(ShowPhyInfo, ShowsTheFarEndsSnrWhereItsSetStarts) {
  const Script readsSentSet = reads(0, kSentSet, medleySet({{101, 101}}));
  Bytes snr(102, 0xFF);
  snr[101] = 84;                                                                                // 10 dB
  expect(findsTones(0) + findsTones(0) + readsSet(0, false) + readsLoading(0, false) +          //
         findsTones(0) + readsSentSet + reads(0, 0xE5000000, littleEndian16({101 << 4 | 7})) +  //
         readsSentSet + findsTones(0) + readsSentSet + asksSnrBlock(0, 0, 101, Bytes(2) + snr) +
         findsTones(0) + readsReceived(0, true));
  EXPECT_EQ(typed("show phy info 0 fe"), shown("005.17500\t9\t0\t0.00000\t-57.51304\t-57.76120",
                                               "005.22675\t0\t7\t10.00000\t-45.47180\t-45.72000"));
}

TEST_F(ShowPhyInfo, ShowsNoBitsOfAnotherLineWhenTheLoadingCannotBeRead) {
  expect(readsNearEnd(0));
  typed("show phy info 0");
  expect(findsTones(1) +                                                                           //
         findsTones(1) + readsSet(1, true) + readsLoading(1, true).fails(EIO) +                    //
         findsTones(1) + readsSet(1, false) + readsLoading(1, false).fails(EIO) + findsTones(1) +  //
         readsEnergies(1) + findsTones(1) + readsReceived(1));
  EXPECT_EQ(typed("show phy info 1"), shown("005.17500\t0\t0\t70.20600\t-57.51304\t-57.76120",
                                            "005.22675\t0\t0\t10.29999\t-45.47180\t-45.72000"));
}

TEST_F(ShowPhyInfo, ShowsNoSnrOrSignalOfAnotherLineWithMoreSubcarriers) {
  expect(readsNearEnd(0));
  typed("show phy info 0");
  const Script findsNone = findsLineUp(1) + readsFraming(1, kFirstTone, 0);
  expect(findsNone +                                                //
         findsNone + readsSet(1, true) + readsLoading(1, true) +    //
         findsNone + readsSet(1, false) + readsLoading(1, false) +  //
         findsNone + readsScaling(1, 1000, 20) + findsNone + readsFrontEnd(1));
  Lines rows =
      shown("005.17500\t5\t9\t0.00000\t0.00000\t0.00000", "005.22675\t0\t0\t0.00000\t0.00000\t0.00000");
  rows[2] = "100\t\t0";
  EXPECT_EQ(typed("show phy info 1"), rows);
}

TEST_F(ShowPhyInfo, WritesIntoAFileAndPrintsNothing) {
  expect(readsNearEnd(0));
  EXPECT_THAT(typed("show phy info 0 ne " + file_.file()), IsEmpty());
  EXPECT_EQ(file_.content(), fileOf(kNearEnd));
  expect(readsFarEnd(1));
  EXPECT_THAT(typed("show phy info 1 fe " + file_.file()), IsEmpty());
  EXPECT_EQ(file_.content(), fileOf(kFarEnd));
  expect(readsNearEnd(0));
  EXPECT_THAT(typed("show phy info 0 ne /dev/full"), ElementsAre("Could not write file /dev/full"));
}

TEST_F(ShowPhyInfo, ShowsZeroForANumberThatIsNotFinite) {
  const Script silent = reads(0, 0xE4180000 + 4 * kFirstTone, words({7, 7, 0, 0}));
  const size_t before = (findsTones(0).times(4) + readsSet(0, true) + readsLoading(0, true) +
                         readsSet(0, false) + readsLoading(0, false))
                            .size();
  Script script;
  for (size_t i = 0; i < readsNearEnd(0).size(); i++) {
    const Script& all = readsNearEnd(0);
    script = script + (i == before ? silent : Script(all.calls()[i]));
  }
  expect(script);
  EXPECT_EQ(typed("show phy info"), shown("005.17500\t5\t9\t0.00000\t-57.51304\t-57.76120",
                                          "005.22675\t0\t0\t0.00000\t-45.47180\t-45.72000"));
}

TEST_F(ShowPhyInfo, ReportsTheTableThatCannotBeRead) {
  const size_t line = findsLineUp(0).size();
  const size_t tones = line + 1;
  // How many requests each takes. A loading whose last request fails is not reported.
  const struct {
    std::string name;
    size_t requests;
  } tables[] = {{"PHY params", 1},
                {"TX bit-loading table", tones + 2},
                {"RX bit-loading table", tones + 2},
                {"SNR table", tones + 2},
                {"FEQ table", tones + 4}};
  size_t at = line;
  for (const auto& table : tables) {
    for (size_t i = 0; i < table.requests; i++, at++) {
      const bool isLoading = table.name.find("loading") != std::string::npos && i == table.requests - 1;
      if (isLoading) {
        continue;
      }
      SCOPED_TRACE(table.name + ", request " + std::to_string(i));
      expect(readsNearEnd(0).failingAt(at, EIO));
      // 1 when the line cannot be checked or there is no SNR, 12 for any other failed read.
      const bool isUnread = (table.requests == 1 || i >= line) && !(table.name == "SNR table" && i == tones);
      EXPECT_THAT(typed("show phy info 0 ne " + file_.file()),
                  ElementsAre("Failed to read " + table.name + " (error=" + (isUnread ? "12" : "1") + ")"));
      EXPECT_EQ(file_.content(), "");
      verify();
    }
  }
}

TEST_F(ShowPhyInfo, ReportsAFarEndThatRefuses) {
  const Script all = readsFarEnd(0);
  const size_t received = (findsTones(0) + readsReceived(0)).size();
  Script script;
  for (size_t i = 0; i + received + 1 < all.size(); i++) {
    script = script + Script(all.calls()[i]);
  }
  expect(script + asksFarEndSnr(0, {0xFF}));
  EXPECT_THAT(typed("show phy info 0 fe"), ElementsAre("Failed to read SNR table (error=40)"));
}

TEST_F(ShowPhyInfo, TouchesNoFileForALineThatIsNotUp) {
  expect(readsIdentity(1, chipWithLine(LS_INIT_HS)));
  EXPECT_THAT(typed("show phy info 1 ne " + file_.file()), ElementsAre("Line 1 is not in SHOWTIME"));
  EXPECT_EQ(file_.content(), "no file");
}

TEST_F(ShowPhyInfo, ChecksTheLineThenTheEndThenTheStateThenTheFile) {
  EXPECT_THAT(typed("show phy info 2 xx"), ElementsAre(kNoLine));
  for (const std::string end : {"xx", "us", "nE"}) {
    EXPECT_THAT(typed("show phy info 0 " + end), ElementsAre("parameter must be ne or fe"));
  }
  const std::string noFile = file_.path() + "/no/file";
  expect(findsLineUp(0));
  EXPECT_THAT(typed("show phy info 0 ne " + noFile), ElementsAre("Could not open file " + noFile));
  for (const std::string words : {" ?", " 0 ne file 4"}) {
    EXPECT_THAT(typed("show phy info" + words),
                ElementsAre("show phy info [<line-id>] [(ne | fe)] [<filename>] : { 0, us <NONE> }"));
  }
}

}  // namespace
