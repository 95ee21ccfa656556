#include "virtual-board/description/board_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "virtual-board/base/sparse_memory.h"
#include "virtual-board/chip/inventory.h"
#include "virtual-board/description/board_tables.h"
#include "virtual-board/description/foreign_text.h"
#include "virtual-board/description/line_fault_tables.h"
#include "virtual-board/description/parameter_settings.h"
#include "virtual-board/description/spectrum_table.h"
#include "virtual-board/description/toml_reader.h"
#include "virtual-board/line/loop_budget.h"

namespace gfast::board {

namespace {

constexpr double kLongestLoop_m = 2000;
constexpr size_t kMaxTaps = 16;
constexpr size_t kMaxLineFaults = 64;

void readBoardTable(TomlReader table, BoardConfig& config) {
  config.devices = static_cast<int>(table.integer("devices", 0, kMaxDevices).value_or(config.devices));
  config.seed = static_cast<uint32_t>(table.integer("seed", 0, UINT32_MAX).value_or(config.seed));
  table.finish();
}

BridgedTap readTap(TomlReader& table, double loopLength_m) {
  BridgedTap tap{};
  tap.at_m = table.required("at_m", table.number("at_m", 0, loopLength_m));
  tap.length_m = table.required("length_m", table.number("length_m", 0, kLongestLoop_m));
  table.finish();
  return tap;
}

void readLoopTable(TomlReader table, LoopConfig& loop) {
  loop.cable = readCable(table).value_or(loop.cable);
  loop.length_m = table.number("length_m", 0, kLongestLoop_m).value_or(loop.length_m);
  loop.noise_dbm_hz = table.number("noise_dbm_hz", kLeastLevel_dbm_hz, 0).value_or(loop.noise_dbm_hz);
  loop.cut = table.boolean("cut").value_or(loop.cut);
  auto taps = table.tables("taps", "taps");
  if (taps.size() > kMaxTaps) {
    table.failAt("taps", "\"taps\" must have at most " + std::to_string(kMaxTaps) + " entries");
  }
  for (TomlReader& tap : taps) {
    loop.taps.push_back(readTap(tap, loop.length_m));
  }
  table.finish();
}

// Each side has a usual firmware. A version that is given as well must be of that side.
void readFirmware(TomlReader& table, ChipConfig& device) {
  enum { Dp, Cpe };
  const auto side = table.choice("side", {{"dp", Dp}, {"cpe", Cpe}});
  const auto text = table.text("firmware");
  if (side) {
    device.firmware = *side == Dp ? kNetworkFirmware : kSubscriberFirmware;
  }
  if (!text) {
    return;
  }
  const auto version = parseVersion(*text);
  if (!version) {
    table.failAt("firmware", "\"firmware\" must be four numbers of 0 to 255, chipset.ga.rc.profile");
  }
  if (side && version->networkSide() != (*side == Dp)) {
    table.failAt("firmware", "\"firmware\" is not of that side: chipsets 1 and 3 are dp, others cpe");
  }
  device.firmware = *version;
}

void readFlashContents(TomlReader& table, ChipConfig& device) {
  const auto regions = table.texts("flash");
  if (!regions) {
    return;
  }
  const auto holds = [&](const char* region) {
    return std::find(regions->begin(), regions->end(), region) != regions->end();
  };
  device.bootloaderInFlash = holds("bootloader");
  device.manufacturerInFlash = holds("manufacturer");
  device.applicationInFlash = holds("application");
  const auto known = size_t{device.bootloaderInFlash} + size_t{device.manufacturerInFlash} +
                     size_t{device.applicationInFlash};
  if (known != regions->size()) {
    table.failAt("flash", "\"flash\" must list some of bootloader, manufacturer, application, each once");
  }
}

void readBootStage(TomlReader& table, ChipConfig& device) {
  const auto boot = table.choice("boot", {{"b0", static_cast<int>(Stage::kB0)},
                                          {"b1", static_cast<int>(Stage::kB1)},
                                          {"app", static_cast<int>(Stage::kApp)}});
  if (!boot) {
    return;
  }
  device.boot = static_cast<Stage>(*boot);
  const bool needsBootloader = device.boot != Stage::kB0;
  const bool needsApplication = device.boot == Stage::kApp;
  if ((needsBootloader && !device.bootloaderInFlash) || (needsApplication && !device.applicationInFlash)) {
    table.failAt("boot", "\"boot\" asks for firmware that \"flash\" does not hold");
  }
}

void readLineState(TomlReader& table, ChipConfig& device) {
  const auto state = table.choice("line", {{"idle", static_cast<int>(LineState::kIdle)},
                                           {"silent", static_cast<int>(LineState::kSilent)},
                                           {"handshake", static_cast<int>(LineState::kHandshake)},
                                           {"training", static_cast<int>(LineState::kTraining)},
                                           {"showtime", static_cast<int>(LineState::kShowtime)}});
  if (!state) {
    return;
  }
  device.line = static_cast<LineState>(*state);
  if (device.boot != Stage::kApp || !device.bootloaderInFlash || !device.applicationInFlash) {
    table.failAt("line", "\"line\" needs application firmware that runs");
  }
}

std::optional<std::string> readText(TomlReader& table, const char* key, size_t most) {
  auto text = table.text(key);
  if (text && text->size() > most) {
    table.failAt(key, '"' + std::string(key) + "\" must be at most " + std::to_string(most) + " bytes");
  }
  return text;
}

void readDeviceTable(TomlReader& table, ChipConfig& device) {
  readFirmware(table, device);
  if (const auto mac = table.bytes("mac")) {
    if (mac->size() != device.mac.size()) {
      table.failAt("mac", "\"mac\" must be six bytes, such as \"02:00:5e:00:00:01\"");
    }
    std::copy(mac->begin(), mac->end(), device.mac.begin());
  }
  device.temperature_c =
      static_cast<int>(table.integer("temperature_c", -40, 125).value_or(device.temperature_c));
  device.distortion_db = table.number("distortion_db", -200, -20).value_or(device.distortion_db);
  device.vendor = readText(table, "vendor", kVendorSize);
  device.serial = readText(table, "serial", kSerialSize);
  readFlashContents(table, device);
  readBootStage(table, device);
  readLineState(table, device);
  if (auto params = table.table("params", "params")) {
    device.params = readParameterSettings(*params);
  }
  table.finish();
}

// Whether both ends of a line are in this state.
bool together(LineState state) {
  return state == LineState::kHandshake || state == LineState::kTraining || state == LineState::kShowtime;
}

bool trainable(const BoardConfig& config) {
  const size_t network = config.device[0].firmware.networkSide() ? 0 : 1;
  Loop loop(config.loop);
  TonePlan plan =
      tonePlan(Parameters(config.device[network].params), Parameters(config.device[1 - network].params),
               config.loop.limits, loop.electricalLength_db(false));
  plan.networkEnd = network;
  return loop.budget(plan).trainable;
}

// A line that starts in handshake, training or showtime needs two ends and a loop for it.
void checkLine(const std::vector<TomlReader>& tables, const BoardConfig& config) {
  for (size_t i = 0; i < tables.size(); i++) {
    const ChipConfig& end = config.device[i];
    const ChipConfig& other = config.device[1 - i];
    if (!end.line || !together(*end.line)) {
      continue;
    }
    if (other.line.value_or(*end.line) != *end.line) {
      tables[i].failAt("line", "\"line\" contradicts the other device's");
    }
    if (end.firmware.networkSide() == other.firmware.networkSide()) {
      tables[i].failAt("line", "\"line\" needs a dp and a cpe");
    }
    if (other.boot != Stage::kApp || !other.bootloaderInFlash || !other.applicationInFlash) {
      tables[i].failAt("line", "\"line\" needs application firmware that runs on both devices");
    }
    if (config.loop.cut) {
      tables[i].failAt("line", "\"line\" needs a loop that is not cut");
    }
    if (!trainable(config)) {
      tables[i].failAt("line", "\"line\" needs a loop that is not too long to train");
    }
  }
}

void readDevices(TomlReader& root, BoardConfig& config) {
  auto tables = root.tables("device", "[[device]]");
  if (tables.size() > kMaxDevices) {
    tables[kMaxDevices].failHere("there are at most " + std::to_string(kMaxDevices) + " devices");
  }
  for (size_t i = 0; i < tables.size(); i++) {
    readDeviceTable(tables[i], config.device[i]);
  }
  checkLine(tables, config);
}

void readMemory(TomlReader& root, BoardConfig& config) {
  SparseMemory laid[kMaxDevices];
  for (TomlReader& table : root.tables("memory", "[[memory]]")) {
    for (MemoryOverlay& overlay : readMemoryTable(table, config.devices)) {
      if (!laid[overlay.device].write(overlay.address, overlay.bytes)) {
        table.failHere("more than 16 MiB laid over a device's memory");
      }
      config.memory.push_back(std::move(overlay));
    }
  }
}

template <typename Entry, typename Read>
void readAll(TomlReader& root, const char* key, std::vector<Entry>& entries, Read read) {
  const std::string name = "[[" + std::string(key) + "]]";
  for (TomlReader& table : root.tables(key, name.c_str())) {
    entries.push_back(read(table));
  }
}

void readLineFaults(TomlReader& root, LoopConfig& loop) {
  auto tables = root.tables("line_fault", "[[line_fault]]");
  if (tables.size() > kMaxLineFaults) {
    tables[kMaxLineFaults].failHere("there are at most " + std::to_string(kMaxLineFaults) + " line faults");
  }
  for (TomlReader& table : tables) {
    loop.faults.push_back(readLineFaultTable(table, loop));
  }
}

BoardConfig readRoot(TomlReader root) {
  BoardConfig config;
  if (auto board = root.table("board", "[board]")) {
    readBoardTable(*board, config);
  }
  if (auto loop = root.table("loop", "[loop]")) {
    readLoopTable(*loop, config.loop);
  }
  if (auto spectrum = root.table("spectrum", "[spectrum]")) {
    config.loop.limits = readSpectrumTable(*spectrum);
  }
  readLineFaults(root, config.loop);
  readDevices(root, config);
  readMemory(root, config);
  const int devices = config.devices;
  readAll(root, "farend", config.farEnd, readFarEndTable);
  readAll(root, "event", config.events, [=](TomlReader& table) { return readEventTable(table, devices); });
  readAll(root, "log", config.logs, [=](TomlReader& table) { return readLogTable(table, devices); });
  readAll(root, "loop_event", config.loopEvents, readLoopEventTable);
  readAll(root, "device_event", config.deviceEvents, readDeviceEventTable);
  readAll(root, "crash", config.crashes, readCrashTable);
  readAll(root, "extcom", config.extcomErrors,
          [=](TomlReader& table) { return readExtcomTable(table, devices); });
  readAll(root, "fault", config.faults, [=](TomlReader& table) { return readFaultTable(table, devices); });
  root.finish();
  return config;
}

}  // namespace

BoardConfig parseBoard(const std::string& text, const std::string& path) {
  try {
    if (const size_t line = lineNestedTooDeeply(text); line != 0) {
      throw BoardFileError(path + ':' + std::to_string(line) + ": names nest too deeply");
    }
    const toml::table root = toml::parse(text);
    return readRoot(TomlReader(path, root, "the board file"));
  } catch (const toml::parse_error& error) {
    throw BoardFileError(path + ':' + std::to_string(error.source().begin.line) + ": " +
                         printable(error.description()));
  }
}

BoardConfig readBoardFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(text << file.rdbuf())) ||
      errno == EISDIR) {
    throw BoardFileError(path + ": " + std::strerror(errno != 0 ? errno : EIO));
  }
  return parseBoard(text.str(), path);
}

}  // namespace gfast::board
