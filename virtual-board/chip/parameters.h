// A chip's start-up parameters: the dictionary that says where they lie, the area that a host reads and
// writes, and what the running firmware made of it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "virtual-board/base/address_space.h"
#include "virtual-board/chip/parameter_table.h"

namespace gfast::board {

// By parameter, its bytes in chip order.
using ParameterSettings = std::map<eConstParams, std::vector<uint8_t>>;

class Parameters {
 public:
  struct Firmware {
    // Whether the application runs: no other firmware knows parameters.
    std::function<bool()> runs;
    // Called when a parameter now differs that only a restart takes over.
    std::function<void()> restartNeeded;
  };

  // The settings stand in place of initial values and must outlive this object.
  explicit Parameters(const ParameterSettings& settings) : settings_(settings) { powerUp(); }

  // As the chip is delivered: the settings in the area, and nothing else.
  void powerUp();

  void map(AddressSpace& memory, Firmware firmware);

  // The application starts: what the area holds now is what runs, the line's copy included.
  void apply() { running_ = startup_; }

  // The number the firmware runs with: what the last restart took over and, of a line's own parameters, what
  // was written to the line since. Of a byte string, its first bytes.
  uint32_t running(eConstParams id) const;

 private:
  Bytes dictionary() const;
  void startupWritten(const Bytes& bytes);
  void lineWritten(const Bytes& bytes);

  const ParameterSettings& settings_;
  Firmware firmware_;
  Bytes startup_;  // outlives resets
  Bytes running_;
};

}  // namespace gfast::board
