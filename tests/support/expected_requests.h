// A driver that expects a list of requests: a test writes down what the library must ask, and every other
// request, field or order fails the test, as does a request that was never made.
//
//   ExpectedRequests driver(opens(0) + reads(0, SBR_REG_ADDRESS, {0, 0, 0, 3}));
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "driver/driver.h"
#include "support/driver_script.h"

using namespace gfast;

// Installs itself. Its destructor fails the test when a call of the script was not made.
class ExpectedRequests final : public Driver {
 public:
  explicit ExpectedRequests(const Script& script);
  ~ExpectedRequests() override;

  // Further calls, expected after those that were not made yet.
  void expect(const Script& script);

  // How many calls were not made yet. It tells what a wait or a print comes between.
  size_t left();

  // Fails the test when a call was not made, and forgets those.
  void verify();

  static int descriptorOf(int device) { return 40 + device; }

  int open(int device) override;
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;
  void close(int descriptor) override;
  void rediscover() override;

 private:
  // The next call of the script if it is of this kind and device; otherwise the test fails and there is none.
  bool take(ExpectedCall::Kind kind, int device, uint32_t code, const std::string& made, ExpectedCall& next);

  std::mutex lock_;
  std::vector<ExpectedCall> left_;
  int unexpected_ = 0;
};
