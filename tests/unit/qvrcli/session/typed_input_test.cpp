#include "qvrcli/session/typed_input.h"

#include <gtest/gtest.h>
#include <libcli.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "qvrcli/vocabulary/command_table.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using namespace std::string_literals;

constexpr size_t kLineBuffer = CLI_MAX_LINE_LENGTH;

std::string passed(TypedInput& input, const std::string& received) {
  std::string typed;
  input.receive(received, typed);
  return typed;
}

std::string passed(const std::string& received) {
  TypedInput input;
  return passed(input, received);
}

TEST(TypedInput, PassesOnWhatIsTyped) {
  EXPECT_EQ(passed("show version\r"), "show version\r");
  EXPECT_EQ(passed("a\x01\x02\x05\x06\x08\x0b\x0c\x17\x1a\x7fz\r"),
            "a\x01\x02\x05\x06\x08\x0b\x0c\x17\x1a\x7fz\r");
}

TEST(TypedInput, EndsALineAtALineFeedToo) {
  EXPECT_EQ(passed("a\nb\r\nc\rd\n\ne"), "a\rb\rc\rd\r\re");
}

TEST(TypedInput, TakesALineFeedBehindACarriageReturnThatCameBefore) {
  TypedInput input;
  EXPECT_EQ(passed(input, "a\r"), "a\r");
  EXPECT_EQ(passed(input, "\xFF\xF1\nb"), "b");
  EXPECT_EQ(passed(input, "\x1b\n"), "\r");
}

TEST(TypedInput, TakesOutTelnetCommands) {
  EXPECT_EQ(passed("a\xFF\xFB\x01"
                   "b\xFF\xFD\x03"
                   "c\xFF\xF1"
                   "d"),
            "abcd");
}

TEST(TypedInput, TakesOutSubnegotiationsWithTheirContent) {
  EXPECT_EQ(passed("a\xFF\xFA\x1F\x00\x50\x00\x18\xFF\xF0"
                   "b"s),
            "ab");
  EXPECT_EQ(passed("a\xFF\xFA\x18\xFF\xFFquit\r\xFF\xF0"
                   "b"),
            "ab");
}

TEST(TypedInput, PassesOnADoubledByte255AsLibcliReadsIt) {
  EXPECT_EQ(passed("a\xFF\xFF"
                   "b"),
            "a\xFF\xFF"
            "b");
}

TEST(TypedInput, TakesTelnetCommandsThatArriveInPieces) {
  TypedInput input;
  EXPECT_EQ(passed(input, "a\xFF"), "a");
  EXPECT_EQ(passed(input, "\xFB"), "");
  EXPECT_EQ(passed(input,
                   "\x0D"
                   "b"),
            "b");
}

TEST(TypedInput, PassesOnArrowKeysWhole) {
  EXPECT_EQ(passed("\x1b[A\x1b[B\x1b[C\x1b[D"), "\x1b[A\x1b[B\x1b[C\x1b[D");
  TypedInput input;
  EXPECT_EQ(passed(input, "\x1b"), "");
  EXPECT_EQ(passed(input, "["), "");
  EXPECT_EQ(passed(input, "A"), "\x1b[A");
}

TEST(TypedInput, TakesOutKeysTheEditorDoesNotKnow) {
  EXPECT_EQ(passed("a\x1b[3~b"), "ab");
  EXPECT_EQ(passed("a\x1b[1;5Cb"), "ab");
  EXPECT_EQ(passed("a\x1b[Hb"), "ab");
  EXPECT_EQ(passed("a\x1bxb"), "ab");
}

TEST(TypedInput, TakesALineEndInsideAnEscapeSequence) {
  EXPECT_EQ(passed("a\x1b\r"), "a\r");
  EXPECT_EQ(passed("a\x1b[1\r"), "a\r");
}

TEST(TypedInput, ReplacesATabForWhichThereMightBeNoRoom) {
  TypedInput input;
  const size_t roomy = kLineBuffer - 1 - TypedInput::kLongestCompletion;
  EXPECT_EQ(passed(input, std::string(roomy, 'x')), std::string(roomy, 'x'));
  EXPECT_EQ(passed(input, "\t"), "\t");
  EXPECT_EQ(passed(input, "\t"), "\x03");
  EXPECT_EQ(passed(input, "\r\t"), "\r\t");
}

TEST(TypedInput, CountsWhatEarlierTabsMayHaveAdded) {
  TypedInput input;
  const std::string answer = passed(input, std::string(100, '\t'));
  const auto tabs = static_cast<size_t>(std::count(answer.begin(), answer.end(), '\t'));
  EXPECT_EQ(tabs, (kLineBuffer - 1) / TypedInput::kLongestCompletion);
}

TEST(TypedInput, CountsALineThatTheHistoryMayBringBack) {
  for (const std::string& key : {"\x10"s, "\x0e"s, "\x1b[A"s, "\x1b[B"s}) {
    TypedInput input;
    passed(input, std::string(4090, 'x') + "\r");
    EXPECT_EQ(passed(input, "\t"), "\t");
    passed(input, "\r");
    EXPECT_EQ(passed(input, key + "\t"), key + "\x03");
  }
}

TEST(TypedInput, CountsFromZeroAfterALineIsCleared) {
  TypedInput input;
  passed(input, std::string(4090, 'x'));
  EXPECT_EQ(passed(input, "\t\x15\t"), "\x03\x15\t");
}

TEST(TypedInput, CountsAClearedLineThatTheHistoryMayBringBack) {
  TypedInput input;
  passed(input, std::string(4090, 'x') + "\x15\r");
  EXPECT_EQ(passed(input, "\x10\t"), "\x10\x03");
}

TEST(TypedInput, IsNotMisledByTabsAndLineEndsInsideTelnetCommands) {
  TypedInput input;
  passed(input, std::string(4090, 'x') + "\xFF\xFB\r");
  EXPECT_EQ(passed(input, "\t"), "\x03");
}

const std::string kRefused = "\x15" + std::string(1, kRefusedLine) + "\r";

TEST(TypedInput, ReplacesALineThatIsTooLong) {
  TypedInput input;
  const std::string longest(kLongestLine, 'x');
  EXPECT_EQ(passed(input, longest + "\r"), longest + "\r");
  // The editor answers the first character that does not fit with a bell.
  EXPECT_EQ(passed(input, longest + "yz\t\x1b[A\x10\x7f\r"), longest + "y" + kRefused);
  EXPECT_EQ(passed(input, "show version\r"), "show version\r");
  EXPECT_EQ(passed(input, longest + "y\xFF\xFFz\n"), longest + "y" + kRefused);
}

TEST(TypedInput, TakesANewLineAfterOneThatIsTooLongIsCleared) {
  TypedInput input;
  passed(input, std::string(5000, 'x'));
  EXPECT_EQ(passed(input, "\x15show version\r"), "\x15show version\r");
}

TEST(TypedInput, TakesARecalledLineAfterOneThatWasTooLong) {
  TypedInput input;
  passed(input, "show version\r" + std::string(5000, 'x') + "\r");
  EXPECT_EQ(passed(input, "\x10 now\r"), "\x10 now\r");
}

TEST(TypedInput, TakesALineWhoseEndIsDeletedBeforeItIsTooLong) {
  TypedInput input;
  std::string keys(4000, 'x');
  for (int i = 0; i < 100; i++) {
    keys += "abcdefgh\x7f\x7f\x7f\x7f\x08\x08\x08\x08";
  }
  EXPECT_EQ(passed(input, keys + "\r"), keys + "\r");
}

TEST(TypedInput, CountsALineWhoseCursorMayStandAtItsBeginning) {
  for (const std::string& key : {"\x01"s, "\x02"s, "\x1b[D"s}) {
    TypedInput input;
    const std::string keys = std::string(kLongestLine, 'x') + key + "\x7f";
    EXPECT_EQ(passed(input, keys + "y\r"), keys + "y" + kRefused);
  }
}

TEST(TypedInput, MarksAnInterrupt) {
  const std::string interrupt(TypedInput::kInterrupt);
  EXPECT_EQ(passed("a\x03"), "a" + interrupt);
  EXPECT_EQ(passed("\xFF\xF4\xFF\xF3"), interrupt + interrupt);
  EXPECT_EQ(passed(std::string(kLongestLine, 'x') + "yz\x03").substr(kLongestLine), "y" + interrupt);
  EXPECT_EQ(passed("a\0\r\0b"s), "a\rb") << "only an interrupt has a NUL";
}

TEST(TypedInput, DoesNotPassOnTheSignOfARefusedLine) {
  EXPECT_EQ(passed("a" + std::string(1, kRefusedLine) + "b\r"), "ab\r");
}

TEST(TypedInput, LeavesRoomForTheLongestWordThereIs) {
  for (const Command& command : commandTable()) {
    const char* const blank = std::strrchr(command.path, ' ');
    const size_t length = std::strlen(blank == nullptr ? command.path : blank + 1);
    EXPECT_LT(length + 1, TypedInput::kLongestCompletion) << command.path;
  }
}

}  // namespace
