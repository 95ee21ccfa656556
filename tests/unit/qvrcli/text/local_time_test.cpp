#include "qvrcli/text/local_time.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace gfast;
using namespace gfast::console;

namespace {

void setZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

TEST(LocalTime, IsShownWithTheNameOfItsZone) {
  setZone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(localTimeText(1700006400), "2023-11-15T01:00:00+CET");
  EXPECT_EQ(localTimeText(1690000000), "2023-07-22T06:26:40+CEST");
}

TEST(LocalTime, IsEmptyWhenTheNameOfItsZoneIsTooLong) {
  setZone("ABCDEFGHI0");
  EXPECT_EQ(localTimeText(0), "1970-01-01T00:00:00+ABCDEFGHI");
  setZone("ABCDEFGHIJ0");
  EXPECT_EQ(localTimeText(0), "");
}

}  // namespace
