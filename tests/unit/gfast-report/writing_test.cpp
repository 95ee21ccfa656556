// What a report looks like.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gfast-report/console/printed_values.h"
#include "gfast-report/writing/block_plot.h"
#include "gfast-report/writing/html_page.h"
#include "gfast-report/writing/svg_plot.h"
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

TEST(HtmlPage, HasTheDocumentsInFrontOfItsScript) {
  StoredConsole console("showtime.txt");
  const std::string page = htmlPage(console.read(0).reading);
  const size_t stored =
      page.find("<body>\n<script type=\"application/json\" id=\"stored\">{\"/data/lines.json\":{");
  ASSERT_NE(stored, std::string::npos);
  EXPECT_NE(page.find("\"/data/lines/0.json\":{", stored), std::string::npos);
  EXPECT_GT(page.rfind("<script>"), stored);
  EXPECT_THAT(page, testing::EndsWith("</html>\n"));
}

TEST(HtmlPage, IsNotEndedByWhatAChipSays) {
  StoredConsole console("showtime.txt");
  std::string& device = console["show device-info 0"];
  device.replace(device.find("1.9.4.106"), 9, "1</script><script>alert(1)");
  const std::string page = htmlPage(console.read(0).reading);
  EXPECT_THAT(page, HasSubstr("1\\u003c/script>\\u003cscript>alert(1)"));
  EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
}

TEST(SvgPlot, BreaksAPathWhereThereIsNoValue) {
  auto tones = std::make_shared<ToneReading>();
  tones->downstream.snr_db = {10.0F, 20.0F, std::nullopt, 10.0F};
  LineReading line;
  line.tones = tones;
  const std::string drawing = svgPlot(line, "a < b & c");
  EXPECT_THAT(drawing, HasSubstr("a &lt; b &amp; c"));
  EXPECT_THAT(drawing, HasSubstr("<path d=\"M60.0 340.0L60.4 210.0M61.2 340.0\""));
}

TEST(SvgPlot, HasItsHeadingOnlyOfALineThatIsDown) {
  EXPECT_THAT(svgPlot({}, "down"), Not(HasSubstr("<path")));
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
