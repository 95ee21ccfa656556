// The expected throughput at the console: given a line's framing, this is printed.
#include "unit/qvrcli/tones/tone_requests.h"

using namespace gfast;

namespace {

using testing::ElementsAre;

class ShowEtr : public ToneConsole {
 protected:
  // Framing whose rates are easy to compute by hand: 4096 samples a symbol, 4096000 samples a second, and one
  // codeword of one byte. A byte of data in every symbol is 8 kbit/s. It lowers the expected throughput by
  // 8 kbit/s, and a byte of RMC raises it by 8 kbit/s.
  static Script readsDatabase(int device, uint32_t samples = 4096, uint32_t codewords = 1) {
    const uint32_t overhead = 0;
    const uint32_t frames = 1;
    const uint32_t symbols = 1;
    return reads(device, 0xE5002000,
                 words({overhead, samples, 4096000, frames, symbols,  //
                        1, 1, 1, codewords, 25, 1,                    // sent
                        1, 1, 1, codewords, 50, 1}));                 // received
  }
  // Bytes of data and of RMC a symbol: 100 and 4096 sent, 200 and 8192 received.
  static Script readsFramer(int device) {
    std::vector<uint32_t> framer(85);
    framer[21] = 100;
    framer[23] = 4096;
    framer[24] = 200;
    framer[26] = 8192;
    return reads(device, 0xE2440000, words(framer));
  }
  const Lines kAtTheSubscriberSide{"ETRds                 63935.0",  //
                                   "ETRus                 31967.0",
                                   "PHYRATEds             200.0",  // from the database's bytes sent
                                   "PHYRATEus             800.0",
                                   "NDRds                 4000000038",  //
                                   "NDRus                 4000000037", "ETRAVGds              4000000040",
                                   "ETRAVGus              4000000039"};

  // TxNDR is word 37, RxNDR 38, TxEtrAvg 39, RxEtrAvg 40.
  static Script readsDerived(int device) { return reads(device, 0xE2880000, countingWords(216, 4000000000)); }

  static Script readsRates(int device, const Script& database) {
    return findsLineUp(device).times(2) + database + readsFramer(device) + readsDerived(device);
  }
};

TEST_F(ShowEtr, TakesSentRatesForDownstreamAtTheNetworkSide) {
  expect(readsRates(0, readsDatabase(0)));
  EXPECT_THAT(typed("show ETR 0"),
              ElementsAre("ETRds                 31967.0",  // 8 * (4096 - 100) - 1
                          "ETRus                 63935.0",  // 8 * (8192 - 200) - 1
                          "PHYRATEds             800.0",    //
                          "PHYRATEus             1600.0",   //
                          "NDRds                 4000000037",
                          "NDRus                 4000000038",  //
                          "ETRAVGds              4000000039",  //
                          "ETRAVGus              4000000040"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowEtr, TakesReceivedRatesForDownstreamAtTheSubscriberSide) {
  expect(readsRates(1, readsDatabase(1)));
  EXPECT_EQ(typed("show ETR 1"), kAtTheSubscriberSide);
}

// The second line of a board with one chip at the network side.
TEST_F(ShowEtr, TakesAllDirectionsFromTheLine) {
  addLine(1, 0, 0, FALSE);
  expect(readsRates(0, readsDatabase(0)));
  EXPECT_EQ(typed("show ETR 1"), kAtTheSubscriberSide);
}

TEST_F(ShowEtr, ShowsNoRateForFramingValuesOfZero) {
  expect(readsRates(0, readsDatabase(0, 4096, 0)));
  Lines shown = typed("show ETR 0");
  ASSERT_EQ(shown.size(), 8U);
  EXPECT_EQ(shown[0], "ETRds                 N/A");
  EXPECT_EQ(shown[1], "ETRus                 N/A");
  EXPECT_EQ(shown[2], "PHYRATEds             800.0");
  expect(readsRates(0, readsDatabase(0, 0)));
  shown = typed("show ETR 0");
  ASSERT_EQ(shown.size(), 8U);
  EXPECT_EQ(shown[0], "ETRds                 N/A");
  EXPECT_EQ(shown[2], "PHYRATEds             N/A");
  EXPECT_EQ(shown[4], "NDRds                 4000000037");
}

TEST_F(ShowEtr, ReportsTheResultOfAFailedRead) {
  const Script all = readsRates(0, readsDatabase(0));
  const size_t looks = findsLineUp(0).size();
  for (size_t i = 0; i < all.size(); i++) {
    SCOPED_TRACE("request " + std::to_string(i));
    expect(all.failingAt(i, EIO));
    EXPECT_THAT(typed("show ETR 0"), ElementsAre(i < looks       ? "Line 0 is not in SHOWTIME"
                                                 : i < 2 * looks ? "Failed getting ETR (1)"
                                                                 : "Failed getting ETR (12)"));
    EXPECT_EQ(result(), CLI_OK);
    verify();
  }
}

TEST_F(ShowEtr, RefusesALineThatIsNotUp) {
  expect(readsIdentity(1, chipWithLine(LS_IDLE)));
  EXPECT_THAT(typed("show ETR 1"), ElementsAre("Line 1 is not in SHOWTIME"));
}

TEST_F(ShowEtr, RefusesAnUnknownLine) {
  for (const std::string line : {"2", "-1"}) {
    EXPECT_THAT(typed("show ETR " + line),
                ElementsAre("invalid parameter - line number must be between 0..1"));
  }
}

TEST_F(ShowEtr, TakesExactlyOneWord) {
  for (const std::string words : {"", " ?", " 0 ?", " 0 1"}) {
    EXPECT_THAT(typed("show ETR" + words), ElementsAre("show ETR <lineId>"));
  }
}

}  // namespace
