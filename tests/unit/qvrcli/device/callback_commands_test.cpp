// The demonstration of the quarter-hour callback. No keyword leads to it, so it is called as libcli would.
#include <ctime>

#include "qvrcli/device/callback_commands.h"
#include "qvrcli/session/session_stream.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

class QuarterHourCallback : public TypedConsole {
 protected:
  Lines called(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
      arguments.push_back(word.data());
    }
    CLI_register15minCallback(interpreter(), "register callback", arguments.data(),
                              static_cast<int>(arguments.size()));
    return printedSince();
  }
};

TEST_F(QuarterHourCallback, TakesTheFreeSlots) {
  EXPECT_THAT(called({}),
              ElementsAre(MatchesRegex("Callback at address [0-9a-f]{8} with handle 0 registered")));
  EXPECT_THAT(called({}),
              ElementsAre(MatchesRegex("Callback at address [0-9a-f]{8} with handle 1 registered")));
  EXPECT_THAT(called({}), ElementsAre("Failed registering callback"));
}

TEST_F(QuarterHourCallback, FreesTheSlotAndReportsHandleZeroWhenUnregistered) {
  called({});
  called({});
  EXPECT_THAT(called({"NULL"}), ElementsAre("Callback with handle 0 unregistered"));
  // This freed slot 1, and the handle is now 0: the next frees slot 0.
  EXPECT_THAT(called({"null"}), ElementsAre("Callback with handle 0 unregistered"));
  EXPECT_THAT(called({}), ElementsAre(MatchesRegex(".*handle 0 registered")));
  EXPECT_THAT(called({}), ElementsAre(MatchesRegex(".*handle 1 registered")));
}

TEST_F(QuarterHourCallback, PrintsItsUsageForAnyOtherWord) {
  EXPECT_THAT(called({"?"}), ElementsAre("register callback [NULL]"));
  EXPECT_THAT(called({"Null"}), ElementsAre("register callback [NULL]"));
  EXPECT_THAT(called({"NULL", "NULL"}), ElementsAre("register callback [NULL]"));
}

TEST_F(QuarterHourCallback, ReportsTheBoundaryToTheSession) {
  setenv("TZ", "UTC", 1);
  tzset();
  called({});
  CLI_15minEventCallback(1700000100);
  EXPECT_THAT(printedSince(), IsEmpty());  // the notification thread does not print itself
  printWaiting(interpreter());
  EXPECT_THAT(printedSince(), ElementsAre("Event occurred at 2023-11-14T22:15:00+UTC"));
}

}  // namespace
