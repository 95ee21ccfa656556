#include "qvrcli/text/local_time.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

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
  // A C library may refuse such names, and the time is then UTC's.
  const auto known = [](const char* zone) { return std::string(tzname[0]) == zone; };
  setZone("ABCDEFGHI0");
  EXPECT_EQ(localTimeText(0),
            known("ABCDEFGHI") ? "1970-01-01T00:00:00+ABCDEFGHI" : "1970-01-01T00:00:00+UTC");
  setZone("ABCDEFGHIJ0");
  EXPECT_EQ(localTimeText(0), known("ABCDEFGHIJ") ? "" : "1970-01-01T00:00:00+UTC");
}

}  // namespace
