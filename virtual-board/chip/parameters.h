// A chip's start-up parameters: the dictionary that describes them, the start-up area that a host reads and
// writes, and the line's copy with which the firmware runs.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "virtual-board/base/address_space.h"
#include "virtual-board/chip/parameter_table.h"

namespace gfast::board {

// The bytes of a parameter, in chip order.
using ParameterSettings = std::map<eConstParams, std::vector<uint8_t>>;

class Parameters {
 public:
  struct Firmware {
    // Whether the application runs. Without it the areas read as zeros and cannot be written.
    std::function<bool()> runs;
    // Called when a parameter was changed that applies only after a restart.
    std::function<void()> restartNeeded;
  };

  // The settings replace initial values. They must outlive this object.
  explicit Parameters(const ParameterSettings& settings) : settings_(settings) { powerUp(); }

  // Back to the initial values and the settings.
  void powerUp();

  void map(AddressSpace& memory, Firmware firmware);

  // At the start of the application: the firmware runs with the start-up area from now on.
  void apply() { running_ = startup_; }

  // The value that the firmware runs with; of a byte string, its first four bytes.
  uint32_t running(eConstParams id) const;

 private:
  Bytes dictionary() const;
  void startupWritten(const Bytes& bytes);
  void lineWritten(const Bytes& bytes);

  const ParameterSettings& settings_;
  Firmware firmware_;
  Bytes startup_;  // survives resets
  Bytes running_;
};

}  // namespace gfast::board
