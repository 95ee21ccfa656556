#include "virtual-board/chip/inventory.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "chip/inventory_records.h"
#include "virtual-board/chip/device_info.h"

namespace gfast::board {

namespace {

// The system vendors as delivered.
constexpr const char* kNetworkVendor = "VBOARD";
constexpr const char* kSubscriberVendor = "VBHOME";
constexpr uint32_t kArea = VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(0);
constexpr size_t kVersionTextSize = INVENTORY_RESPONSE_SERIAL_NUMBER - INVENTORY_RESPONSE_VERSION_NUMBER;

template <typename Target>
void copyInto(Target&& target, std::span<const uint8_t> bytes) {
  std::fill(target.begin(), target.end(), uint8_t{0});
  std::copy_n(bytes.begin(), std::min(bytes.size(), target.size()), target.begin());
}

std::span<const uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::string factorySerial(const MacAddress& mac) {
  char text[16];
  std::snprintf(text, sizeof text, "VB%02X%02X%02X%02X%02X%02X", mac[0], mac[1], mac[2], mac[3], mac[4],
                mac[5]);
  return text;
}

}  // namespace

Inventory::Inventory(const ChipConfig& config) : otherResponse_(INVENTORY_RESPONSE_SIZE) {
  copyInto(vendor_, bytesOf(config.vendor.value_or(config.firmware.networkSide() ? kNetworkVendor
                                                                                 : kSubscriberVendor)));
  copyInto(serial_, bytesOf(config.serial.value_or(factorySerial(config.mac))));
}

void Inventory::map(AddressSpace& memory, Firmware firmware) {
  firmware_ = std::move(firmware);
  memory.add({kArea,
              NE_AND_FE_INVENTORY_SIZE,
              [this] { return area(); },
              [this](const Bytes& bytes) { written(bytes); },
              {}});
}

Bytes Inventory::response() const {
  Bytes response(INVENTORY_RESPONSE_SIZE);
  std::copy(vendor_.begin(), vendor_.end(), response.begin() + INVENTORY_RESPONSE_VENDOR_ID);
  const FirmwareVersion version = firmware_.version();
  char text[32];
  std::snprintf(text, sizeof text, "%u.%u.%u v%u", version.ga, version.rc, version.profile, version.chipset);
  const std::string shown = std::string(text).substr(0, kVersionTextSize - 1);
  std::copy(shown.begin(), shown.end(), response.begin() + INVENTORY_RESPONSE_VERSION_NUMBER);
  std::copy(serial_.begin(), serial_.end(), response.begin() + INVENTORY_RESPONSE_SERIAL_NUMBER);
  return response;
}

void Inventory::hear(std::span<const uint8_t> vendorId, std::span<const uint8_t> response) {
  copyInto(otherVendorId_, vendorId);
  copyInto(otherResponse_, response);
}

void Inventory::forgetOther() {
  hear({}, {});
}

Bytes Inventory::area() const {
  Bytes area(NE_AND_FE_INVENTORY_SIZE);
  if (!firmware_.runs()) {
    return area;
  }
  const auto put = [&area](uint32_t offset, std::span<const uint8_t> bytes) {
    std::copy(bytes.begin(), bytes.end(), area.begin() + offset);
  };
  const FirmwareVersion version = firmware_.version();
  const uint8_t versionWord[] = {version.profile, version.rc, version.ga, version.chipset};
  put(INVENTORY_DB_FTU_GHS_VENDOR, vendorIdOf(version));
  put(INVENTORY_DB_FTU_VERSION, versionWord);
  put(INVENTORY_DB_SYSTEM_VENDOR, vendor_);
  put(INVENTORY_DB_SYSTEM_SERIAL, serial_);
  put(INVENTORY_DB_FTU_VENDOR, otherVendorId_);
  put(INVENTORY_DB_SIZE, otherResponse_);
  return area;
}

// The host can change only vendor and serial number.
void Inventory::written(const Bytes& area) {
  if (firmware_.runs()) {
    std::copy_n(area.begin() + INVENTORY_DB_SYSTEM_VENDOR, vendor_.size(), vendor_.begin());
    std::copy_n(area.begin() + INVENTORY_DB_SYSTEM_SERIAL, serial_.size(), serial_.begin());
  }
}

}  // namespace gfast::board
