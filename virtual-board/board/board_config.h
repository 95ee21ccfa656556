// What a board is made of, as a board file says it or as it is without one.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "chip/log_records.h"
#include "chip/parameter_ids.h"
#include "virtual-board/base/line_state.h"
#include "virtual-board/chip/crash.h"
#include "virtual-board/chip/firmware_image.h"

namespace gfast::board {

constexpr int kMaxDevices = 2;

// The firmware that runs on a chip, as bits 23-24 of its boot register.
enum class Stage : uint32_t { kNone = 0, kB0 = 1, kB1 = 2, kApp = 3 };

using MacAddress = std::array<uint8_t, 6>;
// Start-up parameters' bytes in chip order.
using ParameterSettings = std::map<eConstParams, std::vector<uint8_t>>;

struct DeviceConfig {
  FirmwareVersion firmware;
  Stage boot = Stage::kApp;
  MacAddress mac{};
  int temperature_c = 47;
  // The inventory as delivered, at most 8 and 32 bytes; none: the usual.
  std::optional<std::string> vendor;
  std::optional<std::string> serial;
  double distortion_db = -70;     // of the analogue front end (front_end.h)
  std::optional<LineState> line;  // none: the line trains by itself
  ParameterSettings params;
  // What flash holds at power-up; a region without is erased.
  bool bootloaderInFlash = true;
  bool applicationInFlash = true;
  bool manufacturerInFlash = true;
};

struct BridgedTap {
  double at_m;
  double length_m;
};

struct LoopConfig {
  std::string cable = "CAD55";
  double length_m = 100.0;
  double noise_dbm_hz = -140.0;
  std::vector<BridgedTap> taps;
  bool cut = false;
};

// Bytes laid over what the board computes, from power-up on.
struct MemoryOverlay {
  int device;
  uint32_t address;
  std::vector<uint8_t> bytes;
};

// The answer to one kind of far-end message: bytes, or an error.
struct FarEndReplacement {
  int line;
  uint32_t request;
  std::vector<uint8_t> response;
  int error = 0;
};

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

// What happens to the loop: a cut or its repair, or else a burst of errors.
struct LoopEvent {
  double at_s;
  std::optional<bool> cut;
  double errors = 0;  // share of what is sent that arrives corrupted
  double for_s = 0;
};

// What happens to a modem, the remote one included.
struct DeviceEvent {
  enum class Kind { kHang, kPowerOff };
  int device;
  double at_s;
  Kind kind;
  std::optional<double> for_s;  // none: for good
};

// An assertion of a processor that fails. A remote modem's chip may crash as well.
struct CrashEvent {
  int device;
  double at_s;
  Assertion assertion;
};

// Lanes of a chip's inter-chip links.
constexpr size_t kExtcomLanes = 7;

// How bad such a lane is.
struct ExtcomErrors {
  int device;
  std::optional<size_t> lane;  // none: all
  double errors_per_s;
};

struct FaultConfig {
  int device;
  std::string request;
  std::optional<uint32_t> address;
  uint32_t skip = 0;
  uint32_t count = 1;  // 0: all that follow
  int error = 0;
};

struct BoardConfig {
  BoardConfig();

  int devices = kMaxDevices;
  uint32_t seed = 1;
  LoopConfig loop;
  // With one chip on the board, the second entry is the remote modem that the host cannot open.
  std::array<DeviceConfig, kMaxDevices> device;
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
