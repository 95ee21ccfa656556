#include "qvrcli/text/link_states.h"

#include <gtest/gtest.h>

using namespace gfast;
using namespace gfast::console;

namespace {

TEST(LinkState, HasAPaddedName) {
  EXPECT_STREQ(linkStateString(0), "self test      ");
  EXPECT_STREQ(linkStateString(1), "unit fail      ");
  EXPECT_STREQ(linkStateString(2), "idle           ");
  EXPECT_STREQ(linkStateString(3), "silent         ");
  EXPECT_STREQ(linkStateString(4), "init hs        ");
  EXPECT_STREQ(linkStateString(5), "init train     ");
  EXPECT_STREQ(linkStateString(6), "show time      ");
  EXPECT_STREQ(linkStateString(7), "deactivating 1 ");
  EXPECT_STREQ(linkStateString(8), "deactivating 2 ");
  EXPECT_STREQ(linkStateString(9), "pre-deactivating 1");
}

TEST(LinkState, OfAnotherValueIsUnknown) {
  EXPECT_STREQ(linkStateString(12), "Unknown        ");
  EXPECT_STREQ(linkStateString(10), "Unknown        ");
  EXPECT_STREQ(linkStateString(-1), "Unknown        ");
}

}  // namespace
