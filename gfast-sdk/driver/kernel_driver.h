// The kernel driver's character devices, "/dev/gfdfe0" and "/dev/gfdfe1".
#pragma once

#include "driver/driver.h"

namespace gfast {

class KernelDriver final : public Driver {
 public:
  int open(int device) override;
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;
  void close(int descriptor) override;
  void rediscover() override;
};

}  // namespace gfast
