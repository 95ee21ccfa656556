// The configuration of a chip: how it is at power-up.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "virtual-board/base/line_state.h"
#include "virtual-board/chip/firmware_image.h"
#include "virtual-board/chip/parameters.h"

namespace gfast::board {

// The firmware stage that runs; the value of bits 23-24 of the boot register.
enum class Stage : uint32_t { kNone = 0, kB0 = 1, kB1 = 2, kApp = 3 };

using MacAddress = std::array<uint8_t, 6>;

struct ChipConfig {
  FirmwareVersion firmware;
  Stage boot = Stage::kApp;
  MacAddress mac{};
  int temperature_c = 47;
  // The inventory's texts, at most 8 and 32 bytes. Empty: the usual vendor, a serial number made from the MAC
  // address.
  std::optional<std::string> vendor;
  std::optional<std::string> serial;
  double distortion_db = -70;     // of the analogue front end, relative to the signal
  std::optional<LineState> line;  // empty: the line trains by itself
  ParameterSettings params;
  // What flash holds at power-up. The other regions are erased.
  bool bootloaderInFlash = true;
  bool applicationInFlash = true;
  bool manufacturerInFlash = true;
};

}  // namespace gfast::board
