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

// A C library may refuse a long name, and the time is then UTC's.
TEST(LocalTime, IsShownWithAZonesNameOfAnyLength) {
  for (const size_t length : {9U, 10U, 11U, 12U, 100U}) {
    setZone((std::string(length, 'Z') + '0').c_str());
    EXPECT_EQ(localTimeText(0), std::string("1970-01-01T00:00:00+") + tzname[0]);
  }
}

}  // namespace
