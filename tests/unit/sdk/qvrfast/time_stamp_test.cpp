// Time stamps in local time, and the numbers of quarter hours.
#include "qvrfast/time_stamp.h"

#include <cstring>
#include <ctime>
#include <string>

#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

TEST(TimeStamp, HasLocalTimeAndZone) {
  setZone("CET-1");
  G9972_timeStamp_t stamp;
  formatTimeStamp(at(10, 15, 7), stamp);
  EXPECT_STREQ(stamp, "2023-11-15T11:15:07+CET");
}

TEST(TimeStamp, CutsALongZoneName) {
  setZone("<ABCDEFGHIJKLMNOPQRSTUVWXYZ>0");
  G9972_timeStamp_t stamp;
  formatTimeStamp(at(10, 15, 7), stamp);
  // A C library may refuse such a name, and the time is then UTC's.
  const bool known = std::string(tzname[0]) == "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  EXPECT_STREQ(stamp, known ? "2023-11-15T10:15:07+ABCDEFGHI" : "2023-11-15T10:15:07+UTC");
}

TEST(TimeStamp, IsTerminatedForTimesWithoutACalendarDate) {
  setZone("UTC0");
  for (const time_t time :
       {std::numeric_limits<time_t>::max(), std::numeric_limits<time_t>::min(), time_t{-1}}) {
    G9972_timeStamp_t stamp;
    std::memset(stamp, 'x', sizeof stamp);
    formatTimeStamp(time, stamp);
    EXPECT_NE(std::memchr(stamp, '\0', sizeof stamp), nullptr);
    EXPECT_GE(intervalNumberAt(time), 1U);
    EXPECT_LE(intervalNumberAt(time), 96U);
  }
}

TEST(TimeStamp, NumbersTheQuarterHoursOfTheLocalDay) {
  setZone("UTC0");
  EXPECT_EQ(intervalNumberAt(at(0, 0)), 1U);
  EXPECT_EQ(intervalNumberAt(at(0, 14, 59)), 1U);
  EXPECT_EQ(intervalNumberAt(at(0, 15)), 2U);
  EXPECT_EQ(intervalNumberAt(at(23, 59, 59)), 96U);
  setZone("<+0545>-5:45");
  EXPECT_EQ(intervalNumberAt(at(18, 15)), 1U);
  EXPECT_EQ(intervalNumberAt(at(18, 0)), 96U);
}

}  // namespace
