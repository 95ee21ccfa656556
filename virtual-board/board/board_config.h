// The configuration of a whole board. Without changes it is that of a board without a board file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "virtual-board/board/far_end.h"
#include "virtual-board/board/faults.h"
#include "virtual-board/chip/chip_config.h"
#include "virtual-board/chip/crash.h"
#include "virtual-board/line/loop_config.h"

namespace gfast::board {

constexpr int kMaxDevices = 2;

// Bytes that hide what the board computes at their addresses, from power-up on.
struct MemoryOverlay {
  int device;
  uint32_t address;
  std::vector<uint8_t> bytes;
};

// Events and logs that a board file makes. Times are seconds since power-up, here and below.
struct TimedEvent {
  int device;
  double at_s;
  uint32_t type;
  std::vector<uint32_t> params;
};

struct TimedLog {
  int device;
  double at_s;
  uint8_t core;  // LOG_CORE_TYPE_E
  uint8_t line;
  std::string text;
  std::vector<uint32_t> params;
};

// A cut or a repair of the loop; or, without `cut`, errors for a time.
struct LoopEvent {
  double at_s;
  std::optional<bool> cut;
  double errors = 0;  // share of what is sent that arrives corrupted
  double for_s = 0;
};

// A modem hangs or loses its power. Here and in CrashEvent, device 1 may be the remote modem.
struct DeviceEvent {
  enum class Kind { kHang, kPowerOff };
  int device;
  double at_s;
  Kind kind;
  std::optional<double> for_s;  // empty: it stays so
};

// A failed assertion.
struct CrashEvent {
  int device;
  double at_s;
  Assertion assertion;
};

// Errors on a chip's inter-chip lanes.
struct ExtcomErrors {
  int device;
  std::optional<size_t> lane;  // empty: all lanes
  double errors_per_s;
};

struct BoardConfig {
  BoardConfig();

  int devices = kMaxDevices;
  uint32_t seed = 1;
  LoopConfig loop;
  // With one chip on the board, the second entry is the remote modem, which the host cannot open.
  std::array<ChipConfig, kMaxDevices> device;
  std::vector<MemoryOverlay> memory;
  std::vector<FarEndReplacement> farEnd;
  std::vector<TimedEvent> events;
  std::vector<TimedLog> logs;
  std::vector<LoopEvent> loopEvents;
  std::vector<DeviceEvent> deviceEvents;
  std::vector<CrashEvent> crashes;
  std::vector<ExtcomErrors> extcomErrors;
  std::vector<FaultConfig> faults;
};

constexpr FirmwareVersion kNetworkFirmware{1, 9, 4, 106};
constexpr FirmwareVersion kSubscriberFirmware{2, 9, 4, 106};

inline BoardConfig::BoardConfig() {
  device[0].firmware = kNetworkFirmware;
  device[0].mac = {0x02, 0x00, 0x5E, 0x00, 0x00, 0x01};
  device[1].firmware = kSubscriberFirmware;
  device[1].mac = {0x02, 0x00, 0x5E, 0x00, 0x00, 0x02};
}

}  // namespace gfast::board
