// Reading field traces: what stands in them, and one message for everything that does not belong there.
#include "gfast-lab/replay/trace_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <random>
#include <string>

#include "gfast-lab/replay/blanked_trace.h"
#include "support/temporary_folder.h"

using namespace gfast;
using namespace gfast::replay;

namespace {

using testing::ElementsAre;
using testing::StartsWith;

using Bytes = std::vector<uint8_t>;

const std::string kTitle = "gfast-trace 1 2026-03-01T12:00:00.000000Z\n";

FieldTrace parsed(const std::string& lines) {
  return parseTrace(kTitle + lines);
}

TracedExchange only(const std::string& lines) {
  const FieldTrace trace = parsed(lines);
  EXPECT_EQ(trace.exchanges.size(), 1U) << lines;
  return trace.exchanges.at(0);
}

// What is wrong with a trace.
std::string mistakeIn(const std::string& text) {
  try {
    parseTrace(text);
  } catch (const TraceError& error) {
    return error.what();
  }
  return "nothing";
}

TEST(TraceReader, ReadsWhoAskedWhatAndWhen) {
  const TracedExchange exchange = only("12.000345 n 1 memread e0000238 4 = ok 4\n  < 00008001\n");
  EXPECT_EQ(exchange.time_us, 12000345U);
  EXPECT_EQ(exchange.thread, TraceThread::kNotification);
  EXPECT_EQ(exchange.request, (TraceRequest{TraceKind::kMemRead, 1, {0xE0000238, 4}}));
  EXPECT_EQ(*exchange.answer, (TraceAnswer{0, {0, 0, 0x80, 1}}));
}

TEST(TraceReader, ReadsWhatIsSentAndWhatComesBack) {
  const TracedExchange exchange = only("0.000001 c 0 farend 0 2 524 5 = ok 3\n > 01020304 05\n < 060708\n");
  EXPECT_EQ(exchange.request, (TraceRequest{TraceKind::kFarEnd, 0, {0, 2, 524, 5}, "", {1, 2, 3, 4, 5}}));
  EXPECT_EQ(exchange.answer->returned, (Bytes{6, 7, 8}));
}

TEST(TraceReader, ReadsWhenTheRecordingBegan) {
  EXPECT_EQ(parseTrace("gfast-trace 1 2026-03-01T12:00:00.000001Z\n").started_us, 1772366400000001);
  EXPECT_EQ(parseTrace("gfast-trace 1 -\n").started_us, std::nullopt);
  EXPECT_EQ(mistakeIn("gfast-trace 1 2026-03-01\n"),
            "1: not a moment such as 2026-03-01T12:00:00.000000Z: 2026-03-01");
  EXPECT_EQ(mistakeIn("gfast-trace 1 2026-02-29T12:00:00.000000Z\n"),
            "1: no such day: 2026-02-29T12:00:00.000000Z");
}

TEST(TraceReader, ReadsErrorsByNameAndByNumber) {
  EXPECT_EQ(only("0.000001 c 0 open = ENODEV\n").answer->error, ENODEV);
  EXPECT_EQ(only("0.000001 c 0 open = 1234\n").answer->error, 1234);
}

TEST(TraceReader, ReadsRunsAndLinesInAnyPieces) {
  const auto bytes = [](const std::string& lines) {
    return only("0.000001 c 0 memread d0000000 20 = ok 20\n" + lines).answer->returned;
  };
  Bytes expected(20, 0);
  expected[0] = 1;
  EXPECT_EQ(bytes("  < 01000000 00000000*4\n"), expected);
  EXPECT_EQ(bytes("< 01 00 0000\r\n#a person's note\n\n\t< 00000000*1 00000000*3\n"), expected);
}

TEST(TraceReader, TakesAnEarlierAnswerForSame) {
  const FieldTrace trace = parsed(
      "1.000000 c 0 memread d0000000 2 = ok 2\n < 0102\n"
      "2.000000 n 0 memread d0000000 2 = ok 2\n < 0304\n"
      "3.000000 c 0 memread d0000000 2 = same\n");
  EXPECT_EQ(trace.exchanges.at(2).answer->returned, (Bytes{1, 2}));
}

TEST(TraceReader, ReadsFileNames) {
  EXPECT_EQ(only("0.000001 c 0 imgdnld \"/a%20b%22.bin\" = ok\n").request.file, "/a b\".bin");
  EXPECT_EQ(only("0.000001 c 0 imgdnld \"\" = ok\n").request.file, "");
}

TEST(TraceReader, LeavesOutALastExchangeThatIsNotWhole) {
  const std::string whole = "1.000000 c 0 open = ok\n";
  for (const char* const rest :
       {"1.5", "1.500000 c 0 memread d0000000 4 = ok 4", "1.500000 c 0 memread d0000000 4 = ok 4\n",
        "1.500000 c 0 memread d0000000 4 = ok 4\n  < 0001",
        "1.500000 c 0 memread d0000000 4 = ok 4\n  < 00010203"}) {
    const FieldTrace trace = parsed(whole + rest);
    EXPECT_EQ(trace.exchanges.size(), 1U) << rest;
    EXPECT_TRUE(trace.cut) << rest;
  }
  EXPECT_FALSE(parsed(whole).cut);
}

TEST(TraceReader, SaysInWhichLineWhatIsWrong) {
  const struct {
    const char* lines;
    const char* mistake;
  } mistakes[] = {
      {"x\n", "2: an exchange begins with time, thread, device and request"},
      {"# a note\n\n1 c 0 open = ok\n", "4: not a time such as 12.345678: 1"},
      {"1.5 c 0 open = ok\n", "2: not a time such as 12.345678: 1.5"},
      {"9999999999.000000 c 0 open = ok\n", "2: not a time such as 12.345678: 9999999999.000000"},
      {"-1.000000 c 0 open = ok\n", "2: not a time such as 12.345678: -1.000000"},
      {"1.000000 x 0 open = ok\n", "2: neither c nor n for the thread: x"},
      {"1.000000 c 10 open = ok\n", "2: neither a device's digit nor -: 10"},
      {"1.000000 c 0 mewread 0 = ok\n", "2: no such request: mewread"},
      {"1.000000 c 0 mew\x1b[2J 0 = ok\n", "2: no such request: mew?[2J"},
      {"1.000000 c 0 memread d000000g 4 = ok\n", "2: not an address of 8 hexadecimal digits: d000000g"},
      {"1.000000 c 0 memread d000 4 = ok\n", "2: not an address of 8 hexadecimal digits: d000"},
      {"1.000000 c 0 memread d0000000 4294967296 = ok\n", "2: not a number: 4294967296"},
      {"1.000000 c 0 memread d0000000\n", "2: an argument is missing"},
      {"1.000000 c 0 memread d0000000 4\n", "2: the result is missing"},
      {"1.000000 c 0 memread d0000000 4 = \n", "2: the result is missing"},
      {"1.000000 c 0 memread d0000000 4 = EWHAT\n", "2: not a result: EWHAT"},
      {"1.000000 c 0 memread d0000000 4 = 0\n", "2: not a result: 0"},
      {"1.000000 c 0 memread d0000000 4 = 5000\n", "2: not a result: 5000"},
      {"1.000000 c 0 memread d0000000 4 = same\n", "2: no earlier answer that this could be the same as"},
      {"1.000000 c 0 open = same\n", "2: not a result: same"},
      {"1.000000 c 0 open = ok 4\n", "2: more than this request has: 4"},
      {"1.000000 c 0 close = ok\n", "2: more than this request has: ="},
      {"1.000000 c 0 memread d0000000 4 = ok 65537\n", "2: more bytes than a request carries: 65537"},
      {"1.000000 c 0 memwrite d0000000 99999999999 = ok\n", "2: not a number: 99999999999"},
      {"1.000000 c 0 imgdnld x = ok\n", "2: not a file name in quotes: x"},
      {"1.000000 c 0 imgdnld \" = ok\n", "2: not a file name in quotes: \""},
      {"1.000000 c 0 imgdnld \"%4\" = ok\n", "2: not two hexadecimal digits behind % in a file name: \"%4\""},
      {"1.000000 c 0 imgdnld \"%zz\" = ok\n",
       "2: not two hexadecimal digits behind % in a file name: \"%zz\""},
      {"< 00\n", "2: bytes without a request before them"},
      {"1.000000 c 0 open = ok\n< 00\n", "3: more bytes than announced: 00"},
      {"1.000000 c 0 memread d0000000 4 = ok 4\n< 0001\n1.1 \n", "2: fewer bytes follow than announced"},
  };
  for (const auto& [lines, mistake] : mistakes) {
    EXPECT_EQ(mistakeIn(kTitle + lines), mistake) << lines;
  }
}

TEST(TraceReader, SaysWhatIsWrongWithBytes) {
  const struct {
    const char* bytes;
    const char* mistake;
  } mistakes[] = {
      {"0g", "3: not bytes in hexadecimal digits: 0g"},
      {"000", "3: not bytes in hexadecimal digits: 000"},
      {"0000000000", "3: not bytes in hexadecimal digits: 0000000000"},
      {"+1", "3: not bytes in hexadecimal digits: +1"},
      {"*4", "3: not bytes in hexadecimal digits: *4"},
      {"0000*2", "3: not bytes in hexadecimal digits: 0000*2"},
      {"00000000*", "3: not a number: "},
      {"00000000*-1", "3: not a number: -1"},
      {"00000000*99999999999999999999", "3: not a number: 99999999999999999999"},
      {"00000000*4000000000", "3: more bytes than a request carries: 4000000000"},
      {"00000000*65536", "3: more bytes than announced: 00000000*65536"},
      {"00000000*2", "3: more bytes than announced: 00000000*2"},
      {"00000000 00", "3: more bytes than announced: 00"},
      {"00000000*0", "2: fewer bytes follow than announced"},
  };
  for (const auto& [bytes, mistake] : mistakes) {
    EXPECT_EQ(mistakeIn(kTitle + "1.000000 c 0 memread d0000000 4 = ok 4\n  < " + bytes +
                        "\n2.000000 c 0 open = ok\n"),
              mistake);
  }
}

TEST(TraceReader, RefusesWhatIsNoTrace) {
  const char* const mistake = "1: the first line is not that of a field trace: gfast-trace 1";
  for (const char* const text :
       {"", "\n", "gfast-trace", "gfast-trace 2\n", "gfast-trace 12\n", "gfast-trace 1 - y\n",
        "\x7f"
        "ELF\n"}) {
    EXPECT_EQ(mistakeIn(text), mistake) << text;
  }
  EXPECT_EQ(mistakeIn("gfast-trace 1\n"), "nothing");
}

TEST(TraceReader, BoundsWhatItHolds) {
  EXPECT_THAT(mistakeIn(std::string(kMostTraceBytes + 1, '\n')), StartsWith("1: the trace is larger"));
  std::string large = kTitle;
  for (int i = 0; i < 1025; i++) {
    large += "1.000000 c 0 memread d0000000 1 = ok 65536\n< 00000000*16384\n";
  }
  EXPECT_EQ(mistakeIn(large), "2051: the exchanges carry too many bytes in all");
}

TEST(TraceReader, SurvivesEveryCutAndEveryChangedByte) {
  const std::string text = kTitle +
                           "0.044835 c 0 open = ok\n"
                           "0.045019 c 0 memread e0000238 4 = ok 4\n  < 00008001\n"
                           "0.045196 c 0 memread e0000238 4 = same\n"
                           "0.500000 c 0 imgdnld \"a%20b\" = EIO\n"
                           "0.600000 c 0 farend 0 2 524 4 = ok 24\n  > 01020304\n  < 00000000*6\n";
  for (size_t length = 0; length < text.size(); length++) {
    mistakeIn(text.substr(0, length));
  }
  std::mt19937 random(1);
  const std::string likely = "09af *<>=.-%\"\n\r\t";
  for (int i = 0; i < 20000; i++) {
    std::string changed = text;
    for (int k = 0; k < 3; k++) {
      changed[random() % changed.size()] =
          random() % 2 == 0 ? likely[random() % likely.size()] : static_cast<char>(random());
    }
    mistakeIn(changed);
  }
}

TEST(TraceReader, NamesTheFileThatItCannotRead) {
  const TemporaryFolder folder;
  const std::string wrong = folder.write("wrong.trace", kTitle + "x\n");
  const struct {
    std::string file;
    std::string mistake;
  } cases[] = {
      {folder.file("none"), folder.file("none") + ": No such file or directory"},
      {folder.path(), folder.path() + ": Is a directory"},
      {wrong, wrong + ":2: an exchange begins with time, thread, device and request"},
  };
  for (const auto& [file, mistake] : cases) {
    try {
      readTrace(file);
      ADD_FAILURE() << file;
    } catch (const TraceError& error) {
      EXPECT_EQ(error.what(), mistake);
    }
  }
}

TEST(BlankedTrace, IsTheTraceWithoutMacAddresses) {
  EXPECT_EQ(blankedText(parsed("0.000001 c 0 memread e1000008 8 = ok 8\n  < 11112222 33334444\n"
                               "0.000002 c 0 memread e1000008 8 = same\n"
                               "0.000003 c - rediscover\n")),
            "gfast-trace 1 2026-03-01T12:00:00.000000Z blanked\n"
            "0.000001 c 0 memread e1000008 8 = ok 8\n  < 11110000 00000000\n"
            "0.000002 c 0 memread e1000008 8 = same\n"
            "0.000003 c - rediscover\n");
}

TEST(BlankedTrace, IsReadAsOne) {
  EXPECT_TRUE(parseTrace(blankedText(parseTrace("gfast-trace 1\n"))).blanked);
  EXPECT_FALSE(parsed("").blanked);
}

}  // namespace
