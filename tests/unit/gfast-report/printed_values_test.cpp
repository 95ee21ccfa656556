#include "gfast-report/console/printed_values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gfast-report/console/console_client.h"

using namespace gfast::report;

namespace {

using testing::ElementsAre;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

TEST(PrintedNumbers, HaveNothingBesideThem) {
  EXPECT_THAT(numberIn("17", 0, 20), Optional(17));
  EXPECT_THAT(numberIn("-17", -20, 20), Optional(-17));
  for (const char* text : {"", " 17", "17 ", "0x17", "17x", "99999999999999999999", "+17"}) {
    EXPECT_EQ(numberIn(text, 0, 20), std::nullopt) << text;
  }
  EXPECT_EQ(numberIn("21", 0, 20), std::nullopt);
}

TEST(PrintedNumbers, HaveOneDigitBehindThePoint) {
  EXPECT_THAT(tenthsIn("8.1"), Optional(81));
  EXPECT_THAT(tenthsIn("-0.5"), Optional(-5));
  for (const char* text : {"", "8", "8.", ".1", "8.12", "8.x", "8.-", "99999.0"}) {
    EXPECT_EQ(tenthsIn(text), std::nullopt) << text;
  }
}

TEST(PrintedStamps, AreTakenAsUtc) {
  EXPECT_THAT(stampIn("2024-01-01T00:33:20+UTC"), Optional(time_t{1704069200}));
  EXPECT_THAT(stampIn("2024-01-01T00:33:20"), Optional(time_t{1704069200}));
  for (const char* text : {"", "2024-01-01", "2024-01-01 00:33:20", "2024-01-0-T00:33:20"}) {
    EXPECT_EQ(stampIn(text), std::nullopt) << text;
  }
}

TEST(PrintedLabels, AreReadInEveryForm) {
  const Labelled values(
      "NDR              677180\r\ncollection time:      20\r\nINITSFCAUSE = 4\r\nSERIALNR:      A B C\r\nEWL "
      " 1\r\nEWL  2\r\n");
  EXPECT_THAT(values.number("NDR", 0, 1000000), Optional(677180));
  EXPECT_THAT(values.number("collection time", 0, 100), Optional(20));
  EXPECT_THAT(values.number("INITSFCAUSE", 0, 255), Optional(4));
  EXPECT_EQ(values.text("SERIALNR"), "A B C");
  EXPECT_EQ(values.text("EWL"), "1");
  EXPECT_EQ(values.text("SNRMds"), "");
}

TEST(PrintedLabels, AreBounded) {
  std::string text;
  for (int i = 0; i < 100000; i++) {
    text += "label" + std::to_string(i) + "  1\n";
  }
  const Labelled values(text);
  EXPECT_EQ(values.text("label0"), "1");
  EXPECT_EQ(values.text("label99999"), "");
}

TEST(PrintedLines, AreCut) {
  const std::string text = std::string(100000, 'x') + "\nshort";
  EXPECT_EQ(linesOf(text).at(0).size(), 512U);
  EXPECT_EQ(linesOf(text).at(1), "short");
}

TEST(PrintedTables, MayBeShort) {
  const PrintedTable table = tableIn("0.00000  255  95.5\r\n0.05175  200  68.0\r\n", ToneTable::kSnr);
  EXPECT_THAT(table.codes, ElementsAre(255, 200));
  EXPECT_EQ(table.problem, "ends at tone 1");
}

struct Damaged {
  const char* text;
  ToneTable kind;
  const char* problem;
};

void PrintTo(const Damaged& damaged, std::ostream* out) {
  *out << damaged.problem;
}

class DamagedTable : public testing::TestWithParam<Damaged> {};

TEST_P(DamagedTable, HasNoValues) {
  const PrintedTable table = tableIn(GetParam().text, GetParam().kind);
  EXPECT_THAT(table.codes, IsEmpty());
  EXPECT_THAT(table.problem, HasSubstr(GetParam().problem));
}

constexpr Damaged kDamaged[] = {
    {"", ToneTable::kSnr, "nothing is printed"},
    {"Error getting SNR table (SNRps) from ds\r\n", ToneTable::kSnr, "Error getting SNR table"},
    {"0.05175  200  68.0\r\n", ToneTable::kSnr, "0.05175"},                           // not the first tone
    {"0.00000  200  68.5\r\n", ToneTable::kSnr, "68.5"},                              // parts that contradict
    {"0.00000  256  96.0\r\n", ToneTable::kSnr, "256"},                               // no such code
    {"0.00000  200  68.0 1\r\n", ToneTable::kSnr, "68.0 1"},                          // one part too many
    {"0.00000  200  68.0\r\nLink [0] down\r\n", ToneTable::kSnr, "row 1: Link [0]"},  // a stranger's line
    {"0  0.00000  12\r\n2  0.10350  12\r\n", ToneTable::kBits, "row 1"},              // a tone left out
    {"0  0.00000  16\r\n", ToneTable::kBits, "16"},            // more bits than there are
    {"0.00000 32768 -3270.8\r\n", ToneTable::kHlog, "32768"},  // beyond 16 bits
    {"0.00000  200  \x1b[2J\r\n", ToneTable::kSnr, ".[2J"},    // nothing for a terminal
};

INSTANTIATE_TEST_SUITE_P(PrintedTables, DamagedTable, testing::ValuesIn(kDamaged));

TEST(PrintedTables, HaveNoMoreRowsThanThereAreTones) {
  std::string text;
  for (int tone = 0; tone < 2049; tone++) {
    char row[64];
    std::snprintf(row, sizeof row, "%d  %.5f  12\r\n", tone, tone * 0.05175);
    text += row;
  }
  EXPECT_THAT(tableIn(text, ToneTable::kBits).codes, IsEmpty());
  text.resize(text.rfind("2048"));
  EXPECT_EQ(tableIn(text, ToneTable::kBits).codes.size(), 2048U);
  EXPECT_EQ(tableIn(text, ToneTable::kBits).problem, "");
}

TEST(TelnetFilter, TakesCommandsOutInWhateverPieces) {
  const std::string bytes(
      "\xff\xfb\x03"
      "a\xff\xfa\x18\x01\xff\xff\x02\xff\xf0"
      "b\xff\xf1"
      "c\xff\xff"
      "d");
  for (size_t piece = 1; piece <= bytes.size(); piece++) {
    TelnetFilter filter;
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += piece) {
      filter.add(std::string_view(bytes).substr(at, piece), text);
    }
    EXPECT_EQ(text, "abcd") << piece;
  }
}

}  // namespace
