// The seam between the library and whatever carries its requests: a kernel driver on the board, a virtual
// board on a developer's machine, a list of expected requests in a test. The program's entry installs one of
// them before anything else runs.
#pragma once

#include <gfast_api.h>

namespace gfast {

class Driver {
 public:
  Driver() = default;
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;
  virtual ~Driver() = default;

  // A descriptor for the device, usable with request and readable while events or log records are pending; -1
  // with errno when the device cannot be opened.
  virtual int open(int device) = 0;

  // One request on an open descriptor, as ioctl: negative with errno on failure. Both the command thread and
  // the notification thread call this, at the same time and on the same descriptor.
  virtual int request(int descriptor, uint32_t code, gfast_iocreq& request) = 0;

  virtual void close(int descriptor) = 0;

  // Makes the driver search for chips again.
  virtual void rediscover() = 0;
};

// Sends requests to this driver from now on. It must live until the process ends.
void installDriver(Driver& driver);

// The installed driver. Without one, a driver on which no device can be opened.
Driver& driver();

}  // namespace gfast
