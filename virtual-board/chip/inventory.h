// Who a chip says it is, and who it has been told the other end is (ITU-T G.997.2).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>

#include "virtual-board/base/address_space.h"
#include "virtual-board/chip/chip_config.h"

namespace gfast::board {

// Bytes of its texts.
constexpr size_t kVendorSize = 8;
constexpr size_t kSerialSize = 32;

class Inventory {
 public:
  struct Firmware {
    // Whether the application runs: no other firmware knows inventories.
    std::function<bool()> runs;
    std::function<FirmwareVersion()> version;
  };

  // As the chip left the factory: the configuration's texts or, without, the usual vendor and a serial number
  // made of the chip's address.
  explicit Inventory(const ChipConfig& config);

  // The area of the chip's line: its own record, of which the host may change vendor and serial number, and
  // the other end's answer. What the host wrote is kept as in flash, for good.
  void map(AddressSpace& memory, Firmware firmware);

  // What the other end is answered: vendor, version as text, serial number.
  Bytes response() const;

  // The other end has introduced itself: its ITU-T G.994.1 vendor id and its response, of any length.
  void hear(std::span<const uint8_t> vendorId, std::span<const uint8_t> response);
  // All that is known of the other end is gone.
  void forgetOther();

 private:
  Bytes area() const;
  void written(const Bytes& area);

  std::array<uint8_t, kVendorSize> vendor_{};
  std::array<uint8_t, kSerialSize> serial_{};
  std::array<uint8_t, 8> otherVendorId_{};
  Bytes otherResponse_;
  Firmware firmware_;
};

}  // namespace gfast::board
