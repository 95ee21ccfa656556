// What the tests of the parameters share: devices that are open, and parameters by number.
#pragma once

#include <gtest/gtest.h>

#include "support/devices.h"
#include "support/dictionaries.h"
#include "support/lines.h"

using namespace gfast;

// Both devices carry a line and are open; no dictionary has been read.
class Parameters : public testing::Test {
 protected:
  Parameters() {
    enterBothLines();
    openDevice(driver_, 0);
    openDevice(driver_, 1);
  }

  void load(uint32_t paramsSize, const std::vector<Entry>& entries) {
    driver_.expect(readsDictionary(paramsSize, entries));
    ASSERT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
    driver_.verify();
  }

  ExpectedRequests driver_{Script()};
};

inline auto id(uint32_t number) {
  return static_cast<eConstParams>(number);
}
