// The driver that passes requests to the kernel.
#include "driver/kernel_driver.h"

#include <gtest/gtest.h>
#include <qvr/kernel_driver.h>

#include <cerrno>
#include <cstdlib>

#include "driver/envelope.h"
#include "driver/recording_driver.h"

using namespace gfast;

namespace {

TEST(KernelDriver, OpenFailsWithoutTheDeviceFile) {
  KernelDriver kernel;
  errno = 0;
  EXPECT_EQ(kernel.open(7), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST(KernelDriver, RequestFailsOnAClosedDescriptor) {
  KernelDriver kernel;
  gfast_iocreq request = emptyRequest();
  errno = 0;
  EXPECT_EQ(kernel.request(-1, DFEIOCMEMRD, request), -1);
  // User-mode emulation refuses codes it does not know before it looks at the descriptor.
  EXPECT_TRUE(errno == EBADF || errno == ENOSYS) << errno;
}

TEST(KernelDriver, CarriesTheRequestsOnceAProgramUsesIt) {
  QVR_useKernelDriver();
  Driver* const used = &driver();
  EXPECT_NE(dynamic_cast<KernelDriver*>(used), nullptr);
  QVR_useKernelDriver();
  EXPECT_EQ(&driver(), used);
}

TEST(KernelDriver, IsRecordedWhenTheEnvironmentAsksForAFieldTrace) {
  ::setenv("GFAST_TRACE", "/dev/null", 1);
  QVR_useKernelDriver();
  Driver* const used = &driver();
  EXPECT_NE(dynamic_cast<RecordingDriver*>(used), nullptr);
  errno = 0;
  EXPECT_EQ(used->open(7), -1);
  EXPECT_EQ(errno, ENOENT);
  QVR_useKernelDriver();
  EXPECT_EQ(&driver(), used);
}

}  // namespace
