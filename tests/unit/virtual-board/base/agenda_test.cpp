#include "virtual-board/base/agenda.h"

#include <gtest/gtest.h>

#include <string>

using namespace gfast;
using namespace gfast::board;

TEST(Agenda, RunsWhatIsDueInTheOrderOfTimeAndThenOfEntry) {
  Agenda agenda;
  std::string ran;
  agenda.at(2, [&] { ran += 'c'; });
  agenda.at(1, [&] { ran += 'a'; });
  agenda.at(1, [&] { ran += 'b'; });
  agenda.at(3, [&] { ran += 'd'; });
  agenda.advance(2);
  EXPECT_EQ(ran, "abc");
  EXPECT_EQ(agenda.next(), 3);
  agenda.advance(10);
  EXPECT_EQ(ran, "abcd");
  EXPECT_EQ(agenda.next(), std::nullopt);
}

TEST(Agenda, ShowsAnActionTheTimeItWasDue) {
  Agenda agenda;
  double seen = 0;
  agenda.at(1.5, [&] { seen = agenda.now(); });
  agenda.advance(4);
  EXPECT_EQ(seen, 1.5);
  EXPECT_EQ(agenda.now(), 4);
}

TEST(Agenda, RunsWhatAnActionEntersIfThatIsDueToo) {
  Agenda agenda;
  std::string ran;
  agenda.at(1, [&] {
    ran += 'a';
    agenda.after(1, [&] { ran += 'b'; });
    agenda.after(9, [&] { ran += 'c'; });
  });
  agenda.advance(5);
  EXPECT_EQ(ran, "ab");
  EXPECT_EQ(agenda.next(), 10);
}

TEST(Agenda, DoesNotRunWhatWasCancelled) {
  Agenda agenda;
  std::string ran;
  Agenda::Ticket first = agenda.at(1, [&] { ran += 'a'; });
  Agenda::Ticket second = Agenda::kNone;
  agenda.at(2, [&] { agenda.cancel(second); });
  second = agenda.at(3, [&] { ran += 'b'; });
  agenda.cancel(first);
  EXPECT_EQ(first, Agenda::kNone);
  agenda.cancel(first);
  agenda.advance(5);
  EXPECT_EQ(ran, "");
  EXPECT_EQ(second, Agenda::kNone);
}

TEST(Agenda, RunsWhatIsEnteredTooLateWithTheNextAdvance) {
  Agenda agenda;
  agenda.advance(5);
  bool ran = false;
  agenda.at(1, [&] {
    ran = true;
    EXPECT_EQ(agenda.now(), 5);
  });
  EXPECT_FALSE(ran);
  agenda.advance(5);
  EXPECT_TRUE(ran);
}
