// The kernel driver's character devices, "/dev/gfdfe0" and "/dev/gfdfe1".
#pragma once

#include "driver/driver.h"

namespace gfast {

#define QVR_K_DEVICE_NAME_FMT "/dev/gfdfe%1d"

class KernelDriver final : public Driver {
 public:
  int open(int device) override;
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;
  void close(int descriptor) override;
  void rediscover() override;
};

}  // namespace gfast
