// Pausing the session.
#include <chrono>

#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

using Sleep = TypedConsole;

TEST_F(Sleep, SleepsTheSecondsItIsTold) {
  EXPECT_THAT(typed("sleep 1"), IsEmpty());
  EXPECT_THAT(typed("sleep 86400"), IsEmpty());
  EXPECT_THAT(testClock().sleeps(), ElementsAre(microseconds(seconds(1)), microseconds(seconds(86400))));
}

TEST_F(Sleep, RefusesOtherNumbersOfSeconds) {
  for (const char* line : {"sleep 0", "sleep 86401", "sleep -1", "sleep x"}) {
    EXPECT_THAT(typed(line), ElementsAre("invalid parameter - must enter value between 1..86400")) << line;
  }
  EXPECT_THAT(testClock().sleeps(), IsEmpty());
}

}  // namespace
