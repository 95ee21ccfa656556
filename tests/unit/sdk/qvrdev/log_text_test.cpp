// Whatever a chip's log text contains, it only prints: no conversion reads or writes memory.
#include "qvrdev/log_text.h"

#include <gmock/gmock.h>

#include <cstdio>

using namespace gfast;

namespace {

using testing::HasSubstr;

constexpr size_t kRoom = 1000;

std::string rendered(std::string_view format, LogParams params = {}) {
  return renderLogText(format, params, kRoom);
}

struct Case {
  const char* format;
  LogParams params;
  const char* text;
};

void expectEach(std::initializer_list<Case> cases) {
  for (const Case& c : cases) {
    EXPECT_EQ(rendered(c.format, c.params), c.text) << c.format;
  }
}

TEST(LogText, PrintsTextWithoutConversionsUnchanged) {
  EXPECT_EQ(rendered("link is up\n"), "link is up\n");
}

TEST(LogText, IsEmptyForAnEmptyFormat) {
  EXPECT_EQ(rendered(""), "");
}

TEST(LogText, PrintsItsWordsInOrder) {
  EXPECT_EQ(rendered("a=%d b=%u c=%x", {0xFFFFFFFE, 7, 0xBEEF}), "a=-2 b=7 c=beef");
}

TEST(LogText, TakesTwelveWords) {
  EXPECT_EQ(rendered("%d %d %d %d %d %d %d %d %d %d %d %d", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}),
            "1 2 3 4 5 6 7 8 9 10 11 12");
}

TEST(LogText, KeepsAConversionWithoutAWordAsText) {
  EXPECT_EQ(rendered("%d%d%d%d%d%d%d%d%d%d%d%d|%5d|%s|%*d", {1}), "100000000000|%5d|%s|%*d");
}

TEST(LogText, PrintsIntegersAsPrintfDoes) {
  const char* const flags[] = {"",   "-",  "0",  "+",  " ",  "#",  "-0", "+0",
                               "-+", " 0", "#0", "-#", "+ ", "0-", "0+"};
  const char* const widths[] = {"", "1", "5", "12"};
  const char* const precisions[] = {"", ".", ".0", ".1", ".4", ".11"};
  const char* const types[] = {"d", "i", "u", "o", "x", "X", "hd", "hhd", "hu", "hhx", "ho"};
  const uint32_t words[] = {0,      1,          0x7F,       0x80,       0xFF,      0x1234,
                            0x8000, 0x12345678, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  for (const char* flag : flags) {
    for (const char* width : widths) {
      for (const char* precision : precisions) {
        for (const char* type : types) {
          const std::string format = std::string("%") + flag + width + precision + type;
          for (const uint32_t word : words) {
            char expected[64];
            std::snprintf(expected, sizeof expected, format.c_str(), word);
            EXPECT_EQ(rendered(format, {word}), expected) << format << " of " << word;
          }
        }
      }
    }
  }
}

TEST(LogText, ReadsEveryWordAs32BitsWhateverTheLengthModifier) {
  expectEach({
      {"%ld %lld %zd", {0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD}, "-1 -2 -3"},
      {"%lu %llx %jx %tu", {0xFFFFFFFF, 0xABCDEF01, 16, 17}, "4294967295 abcdef01 10 17"},
  });
}

TEST(LogText, PrintsCharacters) {
  expectEach({
      {"<%c>", {'A'}, "<A>"},
      {"<%3c|%-3c>", {'A', 'B'}, "<  A|B  >"},
      {"<%lc%C>", {'A', 'B'}, "<AB>"},
      {"<%c%c>\n", {0, 27}, "<..>\n"},
      {"<%c>", {0x12345641}, "<A>"},
  });
}

TEST(LogText, PrintsPointersAndStringsAsNumbers) {
  expectEach({
      {"%s", {0xDEADBEEF}, "0xdeadbeef"},
      {"%ls and %S", {1, 2}, "0x1 and 0x2"},
      {"%p", {0}, "0x0"},
      {"<%8s|%-8s|%.2s>", {1, 2, 3}, "<     0x1|0x2     |0x3>"},
      {"%s %d", {5, 6}, "0x5 6"},
  });
}

TEST(LogText, PrintsFloatsAsHexadecimalWords) {
  expectEach({{"%f %.3e %G %a %d", {0x3FF00000, 1, 2, 3, 4}, "0x3ff00000 0x1 0x2 0x3 4"}});
}

TEST(LogText, KeepsCountConversionsAsText) {
  expectEach({
      {"abc%n %d", {0x1000, 7}, "abc%n 7"},
      {"%hhn%lln%5n", {1, 2, 3}, "%hhn%lln%5n"},
  });
}

TEST(LogText, LimitsTheWidth) {
  for (const char* format : {"%2000000000d|", "%4294967297d|", "%99999999999999999999d|", "%02147483648d|"}) {
    const std::string text = rendered(format, {7});
    EXPECT_EQ(text.size(), 129U) << format;
    EXPECT_THAT(text, testing::EndsWith("7|"));
  }
}

TEST(LogText, LimitsThePrecision) {
  for (const char* format : {"%.2000000000d|", "%.99999999999999999999u|", "%.2147483648x|"}) {
    EXPECT_EQ(rendered(format, {7}), std::string(127, '0') + "7|") << format;
  }
}

TEST(LogText, TakesAWidthAndAPrecisionFromWords) {
  expectEach({
      {"<%*d>", {5, 42}, "<   42>"},
      {"<%*d>", {0xFFFFFFFB, 42}, "<42   >"},
      {"<%.*d>", {4, 42}, "<0042>"},
      {"<%.*d>", {0xFFFFFFFF, 42}, "<42>"},
      {"<%*.*x>", {6, 3, 0xA}, "<   00a>"},
  });
  EXPECT_EQ(rendered("%*d", {0x80000000, 1}).size(), 128U);
  EXPECT_EQ(rendered("%*d", {0x7FFFFFFF, 1}).size(), 128U);
  EXPECT_EQ(rendered("%.*d", {0x7FFFFFFF, 1}).size(), 128U);
}

TEST(LogText, TakesAWordByItsPosition) {
  expectEach({
      {"%2$d %1$d %12$u", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, "2 1 12"},
      {"%13$d %0$d %99999999999$d", {1}, "%13$d %0$d %99999999999$d"},
  });
}

TEST(LogText, KeepsAStrayPercentSign) {
  expectEach({
      {"100%", {}, "100%"},
      {"100%\n", {}, "100%\n"},
      {"%", {}, "%"},
      {"%-", {}, "%-"},
      {"%5", {}, "%5"},
      {"%5.", {}, "%5."},
      {"%h", {}, "%h"},
      {"%.*", {}, "%.*"},
      {"%y %d", {3}, "%y 3"},
      {"%1$", {}, "%1$"},
      {"{} {0} {:d} %d", {3}, "{} {0} {:d} 3"},
  });
}

TEST(LogText, PrintsOnePercentSignForTwo) {
  expectEach({{"%d%% of %%d %5%", {50}, "50% of %d %"}});
}

TEST(LogText, EndsAtTheFirstZeroByte) {
  EXPECT_EQ(rendered({"up\n\0%d", 6}), "up\n");
}

TEST(LogText, ShowsControlCharactersAsDots) {
  EXPECT_EQ(rendered("\x1b[2J\a\b\x7f tab\tend\r\n"), ".[2J... tab\tend\r\n");
}

TEST(LogText, KeepsCharactersBeyondAscii) {
  EXPECT_EQ(rendered("5 \xc2\xb5s \xff"), "5 \xc2\xb5s \xff");
}

TEST(LogText, IsCutToItsRoom) {
  EXPECT_EQ(renderLogText("abcdef", {}, 4), "abcd");
  EXPECT_EQ(renderLogText("abcd", {}, 4), "abcd");
  EXPECT_EQ(renderLogText("abcdef", {}, 1), "a");
}

TEST(LogText, KeepsItsLineEndWhenItIsCut) {
  EXPECT_EQ(renderLogText("%128d%128d\n", {1, 2}, 10), "         \n");
}

TEST(LogText, StaysWithinItsRoomForTheLongestFormat) {
  std::string format;
  while (format.size() + 5 <= 255) {
    format += "%999d";
  }
  EXPECT_EQ(renderLogText(format, {}, 1023).size(), 1023U);
}

// For any bytes, rendering ends, stays within its room and leaves no control character.
TEST(LogText, IsReadableForAnyBytes) {
  constexpr std::string_view kAlphabet =
      "%%%%%%%%**..$0123456789-+ #'hlLqjztdiouxXcsSpnfFeEgGaAmCy\n\x1b\x01\xff";
  uint32_t random = 12345;
  const auto next = [&random](size_t below) {
    random = random * 1664525U + 1013904223U;
    return (random >> 8) % below;
  };
  for (int round = 0; round < 20000; round++) {
    std::string format(next(256), ' ');
    for (char& c : format) {
      c = kAlphabet[next(kAlphabet.size())];
    }
    LogParams params;
    for (uint32_t& word : params) {
      word = random = random * 1664525U + 1013904223U;
    }
    const std::string text = renderLogText(format, params, 1000);
    ASSERT_LE(text.size(), 1000U) << format;
    for (const char c : text) {
      ASSERT_TRUE(static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\r' || c == '\t') << format;
    }
  }
}

}  // namespace
