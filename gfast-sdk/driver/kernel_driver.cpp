#include "driver/kernel_driver.h"

#include <fcntl.h>
#include <qvr/kernel_driver.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "driver/recording_driver.h"

using namespace gfast;

int KernelDriver::open(int device) {
  char name[32];
  std::snprintf(name, sizeof name, QVR_K_DEVICE_NAME_FMT, device);
  return ::open(name, O_RDWR);
}

int KernelDriver::request(int descriptor, uint32_t code, gfast_iocreq& request) {
  return ::ioctl(descriptor, code, &request);
}

void KernelDriver::close(int descriptor) {
  ::close(descriptor);
}

void KernelDriver::rediscover() {
  // Which chips were found shows in the reads that follow; the shell's result does not tell.
  const int ignored = std::system("echo 1 > /proc/gfast/rediscover");
  static_cast<void>(ignored);
}

void QVR_useKernelDriver() {
  // Never destroyed: the notification thread may still be asking while the process exits.
  static auto* kernelDriver = new KernelDriver;
  static Driver& used = recordedIfAsked(*kernelDriver);
  installDriver(used);
}
