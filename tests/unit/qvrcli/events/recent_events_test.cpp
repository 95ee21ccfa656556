// What is remembered of events: for readers that come later.
#include "qvrcli/events/recent_events.h"

#include <gtest/gtest.h>

using namespace gfast::console;

namespace {

TEST(RecentEvents, NameTheLineOfAFailureByTheChangeBehindIt) {
  rememberLineFailure(LF_REASON_LOSS_OF_SIGNAL, 1000);
  rememberLinkState(1, LS_SHOWTIME, LS_DEACTIVATING1);
  rememberLinkState(0, LS_SHOWTIME, LS_DEACTIVATING1);
  const RecentEvents recent = recentEvents();
  ASSERT_TRUE(recent.lines[1].lastFailure);
  EXPECT_EQ(recent.lines[1].lastFailure->reason, LF_REASON_LOSS_OF_SIGNAL);
  EXPECT_EQ(recent.lines[1].lastFailure->time, 1000);
  EXPECT_FALSE(recent.lines[0].lastFailure);
  ASSERT_EQ(recent.events.size(), 3U);
  EXPECT_EQ(recent.events[0].line, 1);
  EXPECT_EQ(recent.events[0].why, "loss of signal");
  EXPECT_EQ(recent.events[1].line, 1);
  EXPECT_EQ(recent.events[1].what, "show time to deactivating 1");
  EXPECT_EQ(recent.events[1].why, "loss of signal");
  EXPECT_EQ(recent.events[2].why, "");
}

TEST(RecentEvents, KeepTheLatestOnes) {
  for (size_t i = 0; i < kMostRecentEvents + 10; i++) {
    rememberLinkState(0, LS_SILENT, i % 2 == 0 ? LS_INIT_HS : LS_IDLE);
  }
  rememberEvent(1, "the last");
  const RecentEvents recent = recentEvents();
  EXPECT_EQ(recent.events.size(), kMostRecentEvents);
  EXPECT_EQ(recent.events.back().what, "the last");
  EXPECT_EQ(recent.events.back().line, 1);
}

TEST(RecentEvents, HaveOneOfWhatIsSaidAgainAndAgain) {
  for (int i = 0; i < 5; i++) {
    rememberEvent(std::nullopt, "device 0 does not answer");
  }
  rememberEvent(std::nullopt, "a chip started anew");
  rememberEvent(std::nullopt, "device 0 does not answer");
  EXPECT_EQ(recentEvents().events.size(), 3U);
}

TEST(RecentEvents, IgnoreLinesThatAreNone) {
  rememberLinkState(QVR_K_MAX_LINES, LS_SILENT, LS_SHOWTIME);
  rememberLinkState(-1, LS_SILENT, LS_SHOWTIME);
  EXPECT_TRUE(recentEvents().events.empty());
  rememberEvent(77, "somewhere");
  EXPECT_FALSE(recentEvents().events.back().line);
}

TEST(RecentEvents, HaveWordsForEveryReason) {
  EXPECT_EQ(failureText(LF_REASON_HIGH_BER), "high error rate");
  EXPECT_EQ(failureText(LF_REASON_QUELVOR_PROPRIETARY), "reason 15");
}

}  // namespace
