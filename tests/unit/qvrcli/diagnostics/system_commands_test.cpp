// The system itself: given what the chip answers, when this is typed, this is printed.
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ShowVersion = TypedConsole;

TEST_F(ShowVersion, PrintsTheLibrarysRevisionWhateverWordsFollow) {
  constexpr const char* version = "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $";
  EXPECT_THAT(typed("show version"), ElementsAre(version));
  EXPECT_THAT(typed("show version a b c d e f"), ElementsAre(version));
  EXPECT_THAT(typed("show version a b?"), ElementsAre("show version"));
  EXPECT_EQ(result(), CLI_OK);
}

using RestartState = TypedConsole;

TEST_F(RestartState, IsBit16OfTheBootRegister) {
  expect(opens(0) + readsWord(0, 0xE0000238, 0x00010000));
  EXPECT_THAT(typed("show system restart-state"),
              ElementsAre("system requires restart (system parameter changed)"));
  expect(reads(0, 0xE0000238, {0xFF, 0xFF, 0xFE, 0xFF}));
  EXPECT_THAT(typed("show system restart-state"), ElementsAre("system does NOT require restart"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(RestartState, IsTheLibrarysResultWhenItCannotBeRead) {
  expect(opens(0) + readsWord(0, 0xE0000238, 0).fails(EIO));
  EXPECT_THAT(typed("show system restart-state"), IsEmpty());
  EXPECT_EQ(result(), 12);
}

TEST_F(RestartState, IsTheLibrarysResultForAnAbsentDevice) {
  expect(opens(0).fails(ENOENT));
  EXPECT_THAT(typed("show system restart-state"), IsEmpty());
  EXPECT_EQ(result(), 18);
}

TEST_F(RestartState, TakesNoWord) {
  EXPECT_THAT(typed("show system restart-state 0"), ElementsAre("show system restart-state"));
}

}  // namespace
