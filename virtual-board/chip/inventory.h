// A chip's inventory (ITU-T G.997.2): its own record, and what it knows of the other end.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>

#include "virtual-board/base/address_space.h"
#include "virtual-board/chip/chip_config.h"

namespace gfast::board {

// Bytes of the texts.
constexpr size_t kVendorSize = 8;
constexpr size_t kSerialSize = 32;

class Inventory {
 public:
  struct Firmware {
    // Whether the application runs. Without it the inventory reads as zeros and cannot be written.
    std::function<bool()> runs;
    std::function<FirmwareVersion()> version;
  };

  // Takes the configuration's texts, or the usual vendor and a serial number made from the MAC address.
  explicit Inventory(const ChipConfig& config);

  // Maps the area of the chip's line: its own record, then the other end's response. The host can change
  // vendor and serial number; they survive resets and losses of power.
  void map(AddressSpace& memory, Firmware firmware);

  // The response to the other end: vendor, version as text, serial number.
  Bytes response() const;

  // Keeps the other end's ITU-T G.994.1 vendor id and its response. Both are cut or filled with zeros.
  void hear(std::span<const uint8_t> vendorId, std::span<const uint8_t> response);
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
