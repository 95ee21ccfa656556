// What a report looks like.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gfast-report/console/printed_values.h"
#include "gfast-report/writing/block_plot.h"
#include "gfast-report/writing/text_page.h"
#include "gfast-report/writing/tone_rows.h"
#include "stored_console.h"

using namespace gfast::console;
using namespace gfast::report;

namespace {

using testing::HasSubstr;

// Characters, not bytes.
size_t widthOf(std::string_view line) {
  return static_cast<size_t>(std::ranges::count_if(line, [](char byte) { return (byte & 0xC0) != 0x80; }));
}

TEST(TextPage, FitsATerminalOf80By24) {
  StoredConsole console("showtime.txt");
  const std::string page = textPage(console.read(0).reading, "127.0.0.1:9000");
  const auto lines = linesOf(page);
  EXPECT_LE(lines.size(), 24U);
  for (const std::string_view line : lines) {
    EXPECT_LE(widthOf(line), 80U) << line;
  }
  EXPECT_THAT(page, HasSubstr("line 0, network side: showtime   2024-01-01 00:33:20 UTC   127.0.0.1:9000"));
  EXPECT_THAT(page, HasSubstr("Mbit/s"));
}

TEST(TextPage, TellsALineThatIsDown) {
  StoredConsole console("down.txt");
  EXPECT_THAT(textPage(console.read(0).reading, "x"), HasSubstr("Tones are measured while the line is up."));
}

TEST(TextPage, TellsAChipThatDoesNotAnswer) {
  StoredConsole console("down.txt");
  console["show line state 0"] = "Could not refresh the data\r\n";
  EXPECT_THAT(textPage(console.read(0).reading, "x"), HasSubstr("line 0: the chip does not answer"));
}

TEST(BlockPlot, DrawsTheWorstOfAColumn) {
  Values falling;
  for (int tone = 0; tone < 2048; tone++) {
    falling.push_back(tone < 1024 ? std::optional<double>(16 - tone / 64) : std::nullopt);
  }
  falling[70] = 0;
  EXPECT_EQ(drawBlocks({"SNR", Summary::kLowest, 2}, falling, {}),
            "        16│█ ▆▅▄▃▂▁▁                       │                                 │\n"
            "SNR      0│█▁████████▇▆▅▄▃▂                │                                 │\n");
}

TEST(BlockPlot, IsEmptyWithoutValues) {
  EXPECT_EQ(drawBlocks({"SNR", Summary::kLowest, 2}, {}, Values(2048)), "");
}

TEST(BlockPlot, DrawsALineThatIsFlat) {
  EXPECT_THAT(drawBlocks({"noise", Summary::kHighest, 1}, Values(2048, -139.0), {}), HasSubstr("│▁▁▁▁▁▁"));
}

TEST(ToneRows, HaveAnEmptyFieldWithoutAValue) {
  StoredConsole console("showtime.txt");
  console["show HLOGps 0 us"] = "Error\r\n";
  const std::string rows = toneRows(console.read(0).reading.lines.at(0));
  EXPECT_EQ(std::ranges::count(rows, '\n'), 2049);
  EXPECT_THAT(rows, HasSubstr("\r\n0,0.00000,0,,,,0,,,\r\n"));
  EXPECT_THAT(rows, testing::ContainsRegex(
                        "\r\n200,10.35000,12,5[0-9].0,-1[0-9]+.0,-[0-9]+.0,12,5[0-9].0,-1[0-9]+.0,\r\n"));
}

}  // namespace
