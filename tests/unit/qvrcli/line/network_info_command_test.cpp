// The rates of all lines in one table: which figures are in it, also when a chip fails or its values make no
// sense.
#include <algorithm>
#include <functional>

#include "chip/device_information.h"
#include "support/chip_identity.h"
#include "support/counter_blocks.h"
#include "support/far_end_answers.h"
#include "support/far_end_memory.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;

const Lines kHeader{
    "",
    "| Link |     Link          |   DS       |   US     | Total  |   DS   |   US   |  DS AVG  |  US AVG  |   "
    "Total   | DS Data  | US Data  |",
    "|  ID  |     State         | Phy Rate   | Phy Rate |  ETR   |   ETR  |   ETR  |   ETR    |   ETR    | "
    "Data Rate |   EFTR   |   EFTR   |",
    "|------+-------------------+------------+----------+--------+--------+--------+----------+----------+---"
    "-"
    "-------+----------+----------|"};

// The table with these rows.
Lines page(const Lines& rows) {
  Lines lines = kHeader;
  lines.insert(lines.end(), rows.begin(), rows.end());
  return lines;
}

const std::string kZeros =
    "|\t   0    |     0    |     0  |     0  |     0  |      0.0 |     0.0  |      0.0  |    0.0   |    0.0  "
    " "
    "|";

// With this framing a byte of data in every symbol is 8 kbit/s on the line, and a byte in every robust symbol
// is 8 kbit/s of expected throughput, less 1 kbit/s in all.
ETR_DB_S framing() {
  ETR_DB_S block{};
  block.numSamplesInSymbol = 1;
  block.samplingFrequency = 1000;
  block.numFramesInSuperFrame = 1;
  block.numSymbolsInFrame = 1;
  block.numTxSymbols = block.numRxSymbols = 2;
  block.Tx_kFec = block.Tx_nFec = block.Tx_Q = 1;
  block.Rx_kFec = block.Rx_nFec = block.Rx_Q = 1;
  block.Tx_B_D = 30000;  // 240 Mbit/s, until the live count replaces it
  return block;
}

GFAST_FRAMER_RAW_COUNTERS_S live() {
  GFAST_FRAMER_RAW_COUNTERS_S block{};
  block.TxBD = 100000;  // 800 Mbit/s
  block.TxBDR = 90000;  // 720 Mbit/s
  block.RxBD = 20000;   // 160 Mbit/s
  block.RxBDR = 15000;  // 120 Mbit/s
  return block;
}

GFAST_DERIVED_COUNTERS_S near() {
  GFAST_DERIVED_COUNTERS_S block{};
  block.TxEtrAvg = 715200;
  block.RxEtrAvg = 118300;
  block.TxNDR = 725000;
  block.RxNDR = 122100;
  block.EFTR = 117400;
  return block;
}

ChipIdentity chip(G9701_linkState_t state, bool networkSide) {
  ChipIdentity identity = chipWithLine(state);
  identity.setWord(DEV_INF_FIRMWARE_VERSION, networkSide ? 0x01000000 : 0x02000000);
  return identity;
}

class ShowNetworkInfo : public TypedConsole {
 protected:
  ShowNetworkInfo() { enterBothLines(); }

  // Both devices have answered once; their lines are idle.
  void SetUp() override {
    expect(opens(0) + readsIdentity(0, chip(LS_IDLE, true)) + opens(1) +
           readsIdentity(1, chip(LS_IDLE, false)));
    QVR_getDeviceInfo(0, nullptr);
    QVR_getDeviceInfo(1, nullptr);
    verify();
  }

  // The reads for a line in showtime: its identity three times, framing and live bytes, derived counters.
  static Script readsUpTo(int device) {
    const ChipIdentity up = chip(LS_SHOWTIME, device == 0);
    return readsIdentity(device, up) + readsIdentity(device, up) + readsEtrDatabase(device, framing_) +
           readsFramer(device, live_) + readsDerived(device, near_) + readsIdentity(device, up);
  }
  static constexpr size_t kBeforeDerived = 8;

  // The derived counters of the far end, in one exchange.
  Script asksFarEnd(int device) {
    constexpr uint32_t kAddress = 0xE2880000;
    GFAST_DERIVED_COUNTERS_S far{};
    far.EFTR = 711900;
    return readsFarEnd(device, ++sequence_, kAddress, chipBytes(far)) + asksManagement(device, Bytes(44));
  }

  static inline ETR_DB_S framing_ = framing();
  static inline GFAST_FRAMER_RAW_COUNTERS_S live_ = live();
  static inline GFAST_DERIVED_COUNTERS_S near_ = near();

 private:
  uint16_t sequence_ = 0;
};

TEST_F(ShowNetworkInfo, ShowsZerosForIdleLines) {
  expect(readsIdentity(0, chip(LS_IDLE, true)) + readsIdentity(1, chip(LS_INIT_TRAIN, false)));
  EXPECT_EQ(typed("show network-info"),
            page({"|  00  |  idle             " + kZeros, "|  01  |  init train       " + kZeros}));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowNetworkInfo, ShowsTheNetworksDirectionsFromEitherSide) {
  expect(readsUpTo(0) + asksFarEnd(0));
  expect(readsUpTo(1) + asksFarEnd(1));
  EXPECT_EQ(
      typed("show network-info"),
      page({"|  00  |  show time        |\t 800    |   160    |   840  |   720  |   120  |    715.2 |   "
            "118.3  |     847.1  |   711.9   |   117.4   |",
            "|  01  |  show time        |\t 240    |   800    |   840  |   120  |   720  |    118.3 |   "
            "715.2  |     847.1  |   117.4   |   711.9   |"}));
}

// A board with one chip at the network side: its second line was never found.
TEST_F(ShowNetworkInfo, TakesAllDirectionsFromTheLine) {
  addLine(1, 0, 0, FALSE);
  expect(readsIdentity(0, chip(LS_IDLE, true)) + readsUpTo(0) + asksFarEnd(0));
  EXPECT_EQ(typed("show network-info")[5],
            "|  01  |  show time        |\t 240    |   800    |   840  |   120  |   720  |    118.3 |   "
            "715.2  |     847.1  |   117.4   |   711.9   |");
}

TEST_F(ShowNetworkInfo, ShowsZerosBehindAReadThatFails) {
  const Script whole = readsUpTo(0);
  for (size_t position = 0; position < kBeforeDerived; position++) {
    SCOPED_TRACE(position);
    expect(whole.failingAt(position, EIO) + readsIdentity(1, chip(LS_IDLE, false)));
    const std::string state = position < 3 ? "Unknown           " : "show time         ";
    EXPECT_EQ(typed("show network-info")[4], "|  00  |  " + state.substr(0, 17) + kZeros);
    verify();
  }
  expect(whole.failingAt(kBeforeDerived, EIO) + readsIdentity(1, chip(LS_IDLE, false)));
  EXPECT_EQ(
      typed("show network-info")[4],
      "|  00  |  show time        |\t 800    |   160    |   840  |   720  |   120  |      0.0 |     0.0  "
      "|      0.0  |    0.0   |    0.0   |");
}

TEST_F(ShowNetworkInfo, ShowsNoThroughputOfTheSentDirectionWithoutAFarEnd) {
  expect(readsUpTo(0) + asksFarEnd(0).failingAt(0, ETIMEDOUT) +
         sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_MGMT_COUNTERS, {}, 44, Bytes(44)).fails(ETIMEDOUT) +
         readsIdentity(1, chip(LS_IDLE, false)));
  EXPECT_EQ(
      typed("show network-info")[4],
      "|  00  |  show time        |\t 800    |   160    |   840  |   720  |   120  |    715.2 |   118.3  "
      "|     847.1  |    0.0   |   117.4   |");
}

TEST_F(ShowNetworkInfo, ShowsZeroForARateThatNoLineCanHave) {
  const std::string withoutFraming =
      "|  00  |  show time        |\t   0    |     0    |     0  |     0  |     0  |    715.2 |   118.3  |"
      "     847.1  |   711.9   |   117.4   |";
  const std::string withoutCounters =
      "|  00  |  show time        |\t 800    |   160    |   840  |   720  |   120  |      0.0 |     0.0  |"
      "      0.0  |   711.9   |    0.0   |";
  struct Spoil {
    const char* what;
    std::function<void()> spoil;
    std::string row;
  };
  const std::vector<Spoil> spoils{
      {"not a number", [] { framing_ = {}; }, withoutFraming},
      {"infinite", [] { framing_.numSamplesInSymbol = 0; }, withoutFraming},
      {"negative", [] { live_ = {}; }, withoutFraming},
      {"wider than its column", [] { std::memset(&live_, 0xFF, sizeof live_); }, withoutFraming},
      {"counters of all ones", [] { std::memset(&near_, 0xFF, sizeof near_); }, withoutCounters},
  };
  for (const Spoil& spoil : spoils) {
    framing_ = framing();
    live_ = live();
    near_ = near();
    spoil.spoil();
    expect(readsUpTo(0) + asksFarEnd(0) + readsIdentity(1, chip(LS_IDLE, false)));
    EXPECT_EQ(typed("show network-info")[4], spoil.row) << spoil.what;
    verify();
  }
}

TEST_F(ShowNetworkInfo, ShowsALineWithoutADeviceAsUnknown) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  expect(readsIdentity(0, chip(LS_IDLE, true)));
  EXPECT_EQ(typed("show network-info"),
            page({"|  00  |  idle             " + kZeros, "|  01  |  Unknown          " + kZeros}));
}

TEST_F(ShowNetworkInfo, TakesNoWords) {
  EXPECT_THAT(typed("show network-info ?"), ElementsAre("show network-info"));
  EXPECT_THAT(typed("show network-info 0"), ElementsAre("show network-info"));
}

TEST(ShowNetworkInfoWithoutDevices, PrintsTheHeaderOnly) {
  CapturedConsole console;
  EXPECT_EQ(console.run("show network-info"), kHeader);
}

}  // namespace
