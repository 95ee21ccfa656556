// Activating, deactivating and resetting lines: when this is typed, these requests are made.
#include "chip/registers.h"
#include "support/chip_identity.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using LineControl = TypedConsole;

constexpr const char* kNoLineToControl = "invalid parameter - line number must be between 0..1";

TEST_F(LineControl, RestartsALineThatIsUp) {
  ChipIdentity up;
  up.setLinkState(LS_SHOWTIME);
  expect(opens(0) + readsIdentity(0, up) + writesWord(0, VIRT_ADDR_REINIT(0), 0));
  EXPECT_THAT(typed("restart line 0"), IsEmpty());
}

TEST_F(LineControl, DoesNotRestartALineThatIsDown) {
  ChipIdentity idle;
  idle.setLinkState(LS_IDLE);
  expect(opens(0) + readsIdentity(0, idle));
  EXPECT_THAT(typed("restart line 0"), IsEmpty());
}

TEST_F(LineControl, RestartsAllLinesThatWereFound) {
  EXPECT_THAT(typed("restart line all"), IsEmpty());  // none was found
  EXPECT_THAT(typed("restart line ALL"), IsEmpty());
}

TEST_F(LineControl, ActivatesALineOrAll) {
  // Before devices are found, every line belongs to the first.
  expect(opens(0) + writesWord(0, VIRT_ADDR_LINKS_PROVISION(0), 1).times(3));
  EXPECT_THAT(typed("activate line 0"), IsEmpty());
  EXPECT_THAT(typed("activate line all"), IsEmpty());
}

TEST_F(LineControl, ActivatesAndDeactivatesAllLinesInTheirOrder) {
  enterBothLines();
  expect(opens(0) + writesWord(0, VIRT_ADDR_LINKS_PROVISION(0), 1) + opens(1) +
         writesWord(1, VIRT_ADDR_LINKS_PROVISION(0), 1));
  EXPECT_THAT(typed("activate line all"), IsEmpty());
  const auto down = [](int device) {
    return writesWord(device, VIRT_ADDR_LINKS_PROVISION(0), 0) + writesWord(device, VIRT_ADDR_REINIT(0), 0);
  };
  expect(down(0) + down(1));
  EXPECT_THAT(typed("deactivate line all"), IsEmpty());
}

TEST_F(LineControl, DeactivatesALineOrAll) {
  const Script down = writesWord(0, VIRT_ADDR_LINKS_PROVISION(0), 0) + writesWord(0, VIRT_ADDR_REINIT(0), 0);
  expect(opens(0) + down.times(3));
  EXPECT_THAT(typed("deactivate line 0"), IsEmpty());
  EXPECT_THAT(typed("deactivate line ALL"), IsEmpty());
}

TEST_F(LineControl, DeactivatesNothingWithoutALine) {
  EXPECT_THAT(typed("deactivate line"), IsEmpty());
}

TEST_F(LineControl, RefusesAnUnknownLine) {
  for (const char* line : {"restart line 2", "activate line -1", "deactivate line 17"}) {
    EXPECT_THAT(typed(line), ElementsAre(kNoLineToControl)) << line;
  }
}

TEST_F(LineControl, TakesAWordWithoutDigitsAsTheFirstLine) {
  expect(opens(0) + writesWord(0, VIRT_ADDR_LINKS_PROVISION(0), 1));
  EXPECT_THAT(typed("activate line All"), IsEmpty());
}

TEST_F(LineControl, NeedsALineToActivateOrRestart) {
  EXPECT_THAT(typed("activate line"), ElementsAre("activate line [<line-id> | all] : { 0 }"));
  EXPECT_THAT(typed("restart line"), ElementsAre("restart line <line-id> | all"));
}

TEST_F(LineControl, ReportsNoFailure) {
  expect(opens(0).fails(ENOENT).times(3));
  EXPECT_THAT(typed("activate line 0"), IsEmpty());
  EXPECT_THAT(typed("deactivate line 0"), IsEmpty());
}

}  // namespace
