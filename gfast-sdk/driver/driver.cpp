#include "driver/driver.h"

#include <atomic>
#include <cerrno>

using namespace gfast;

namespace {

class NoDriver final : public Driver {
 public:
  int open(int /*device*/) override { return fail(ENODEV); }
  int request(int /*descriptor*/, uint32_t /*code*/, gfast_iocreq& /*request*/) override {
    return fail(EBADF);
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

 private:
  static int fail(int error) {
    errno = error;
    return -1;
  }
};

// Never destroyed: the notification thread may still use it while the process exits.
std::atomic<Driver*>& installedDriver() {
  static auto* none = new NoDriver;
  static std::atomic<Driver*> driver{none};
  return driver;
}

}  // namespace

void gfast::installDriver(Driver& driver) {
  installedDriver() = &driver;
}

Driver& gfast::driver() {
  return *installedDriver();
}
