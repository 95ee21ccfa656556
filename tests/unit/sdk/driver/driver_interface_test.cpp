// The kernel driver's contract, as far as it does not depend on the width of a pointer, and the library
// without a driver.
#include <gfast_api.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "driver/driver.h"
#include "driver/envelope.h"

using namespace gfast;

namespace {

TEST(DriverInterface, RequestCodesAreTheSameOnEveryMachine) {
  const uint32_t codes[] = {DFEIOCMEMRD,      DFEIOCMEMWR,      DFEIOCIMGACT,    DFEIOCIMGDNLD,
                            DFEIOCFLASHRD,    DFEIOCFLASHERASE, DFEIOCFLASHPROG, DFEIOCOAMGET,
                            DFEIOCOAMSET,     DFEIOCLOGCFG,     DFEIOCLOGRD,     DFEIOCALMRD,
                            DFEIOCSETPORTTAG, DFEIOCGETRESULT,  DFEIOCDEVINFO,   DFEIOCFARENDMSG};
  uint32_t number = 1;
  for (const uint32_t code : codes) {
    EXPECT_EQ(code, 0xC0044B00U + number++);
  }
}

TEST(DriverInterface, FarEndMessageIsNumber16AlthoughTheDeclaredMaximumIs15) {
  EXPECT_EQ(DFEIOC_MAX_NUM, 15U);
  EXPECT_EQ(DFEIOCFARENDMSG, 0xC0044B10U);
}

TEST(DriverInterface, RecordsWithoutPointersHaveTheSameSizeEverywhere) {
  EXPECT_EQ(sizeof(gfast_imgdnld), 128U);
  EXPECT_EQ(sizeof(gfast_flashprog), 132U);
  EXPECT_EQ(sizeof(gfast_flasherase), 8U);
  EXPECT_EQ(sizeof(gfast_setporttag), 6U);
  EXPECT_EQ(offsetof(gfast_flashprog, hw_flash_addr), 128U);
  EXPECT_EQ(offsetof(gfast_flasherase, erasetype), 6U);
}

TEST(DriverInterface, EmptyRequestIsZeroInEveryByte) {
  const gfast_iocreq request = emptyRequest();
  const auto* bytes = reinterpret_cast<const unsigned char*>(&request);
  for (size_t i = 0; i < sizeof request; i++) {
    EXPECT_EQ(bytes[i], 0) << i;
  }
}

TEST(DriverInterface, OpenAndRequestFailWithoutADriver) {
  errno = 0;
  EXPECT_EQ(driver().open(0), -1);
  EXPECT_EQ(errno, ENODEV);
  gfast_iocreq request = emptyRequest();
  EXPECT_EQ(driver().request(3, DFEIOCMEMRD, request), -1);
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
