#include "virtual-board/description/board_tables.h"

#include <gfast_api.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <string_view>

#include "chip/device_information.h"
#include "chip/extcom_memory.h"
#include "chip/log_records.h"
#include "std/byte_order.h"
#include "std/errno_names.h"
#include "virtual-board/base/line_framing.h"
#include "virtual-board/base/sparse_memory.h"
#include "virtual-board/board/request_kind.h"
#include "virtual-board/description/board_file_error.h"

namespace gfast::board {

namespace {

constexpr int64_t kWordMax = std::numeric_limits<uint32_t>::max();
// Limits of what hosts can read: an event record must fit their buffer, a log text has a length of one byte,
// and they print at most twelve parameters.
constexpr size_t kMaxEventParams = (QVR_K_MAX_EVT_BUFFER_LEN - GFAST_EVENT_PARAMS) / 4;
constexpr size_t kMaxLogText = 255;
constexpr size_t kMaxLogParams = 12;
constexpr size_t kMaxResponse = 65536;

// A device on the board, or the remote modem.
int readModem(TomlReader& table) {
  return static_cast<int>(table.required("device", table.integer("device", 0, kMaxDevices - 1)));
}

int readDevice(TomlReader& table, int devices) {
  const int device = readModem(table);
  if (device >= devices) {
    table.failAt("device", "device " + std::to_string(device) + " is not on the board");
  }
  return device;
}

double readTime(TomlReader& table) {
  return table.number("at_s", 0, kLatest_s).value_or(0);
}

uint32_t readAddress(TomlReader& table) {
  return static_cast<uint32_t>(table.required("address", table.integer("address", 0, kWordMax)));
}

std::optional<int> readErrno(TomlReader& table) {
  const auto name = table.text("errno");
  if (!name) {
    return std::nullopt;
  }
  const auto error = errnoByName(*name);
  if (!error) {
    table.failAt("errno", "\"errno\" must be the name of an error, such as EIO");
  }
  return error;
}

bool takeHex(std::string_view& line, uint32_t& value) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const auto result = std::from_chars(line.data(), line.data() + line.size(), value, 16);
  if (result.ec != std::errc{}) {
    return false;
  }
  line.remove_prefix(static_cast<size_t>(result.ptr - line.data()));
  return true;
}

// Reads "e3100000: 00000001", with one to four words. False: not a line of a dump.
bool parseDumpLine(std::string_view line, uint32_t& address, std::vector<uint8_t>& bytes) {
  constexpr size_t maxBytes = 16;
  if (!takeHex(line, address) || line.substr(0, 2) != ": ") {
    return false;
  }
  line.remove_prefix(1);
  do {
    uint32_t value = 0;
    if (line.substr(0, 1) != " " || bytes.size() == maxBytes || !takeHex(line, value)) {
      return false;
    }
    bytes.resize(bytes.size() + 4);
    store_le32(bytes.data() + bytes.size() - 4, value);
  } while (line.find_first_not_of(' ') != std::string_view::npos);
  return inAddressSpace(address, bytes.size());
}

std::vector<MemoryOverlay> readDump(const std::string& path, int device) {
  std::ifstream file(path);
  std::vector<MemoryOverlay> overlays;
  std::string line;
  for (size_t number = 1; std::getline(file, line); number++) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    if (line.find_first_not_of(' ') == std::string::npos) {
      continue;
    }
    MemoryOverlay piece{device, 0, {}};
    if (!parseDumpLine(line, piece.address, piece.bytes)) {
      throw BoardFileError(path + ':' + std::to_string(number) + ": not a line \"address: word\"");
    }
    if (!overlays.empty() && overlays.back().address + overlays.back().bytes.size() == piece.address) {
      auto& bytes = overlays.back().bytes;
      bytes.insert(bytes.end(), piece.bytes.begin(), piece.bytes.end());
    } else {
      overlays.push_back(std::move(piece));
    }
  }
  return overlays;
}

// File names in a board file are relative to its folder.
std::string besideBoardFile(const std::string& boardFile, const std::string& name) {
  const size_t folder = boardFile.rfind('/');
  return name.starts_with('/') || folder == std::string::npos ? name : boardFile.substr(0, folder + 1) + name;
}

}  // namespace

std::vector<MemoryOverlay> readMemoryTable(TomlReader& table, int devices) {
  const int device = readDevice(table, devices);
  const auto dump = table.text("dump");
  if (table.has("bytes") == table.has("dump")) {
    table.failHere("[[memory]] needs either \"bytes\" or \"dump\"");
  }
  if (dump) {
    table.finish();
    const std::string path = besideBoardFile(table.path(), *dump);
    errno = 0;
    if (std::ifstream probe(path); !probe || probe.peek() == std::ifstream::traits_type::eof()) {
      table.failAt("dump", path + ": " + (errno != 0 ? std::strerror(errno) : "empty file"));
    }
    return readDump(path, device);
  }
  MemoryOverlay overlay{device, readAddress(table), {}};
  overlay.bytes = table.required("bytes", table.bytes("bytes"));
  if (!inAddressSpace(overlay.address, overlay.bytes.size())) {
    table.failAt("bytes", "\"bytes\" reach past the end of memory");
  }
  table.finish();
  return {overlay};
}

FarEndReplacement readFarEndTable(TomlReader& table) {
  FarEndReplacement replacement{};
  replacement.line = static_cast<int>(table.required("line", table.integer("line", 0, kMaxDevices - 1)));
  replacement.request = static_cast<uint32_t>(
      table.required("request", table.integer("request", 0, MGMT_FAR_END_REQ_TYPE_LAST - 1)));
  if (table.has("response") == table.has("errno")) {
    table.failHere("[[farend]] needs either \"response\" or \"errno\"");
  }
  replacement.response = table.bytes("response").value_or(std::vector<uint8_t>{});
  if (replacement.response.size() > kMaxResponse) {
    table.failAt("response", "\"response\" must be at most " + std::to_string(kMaxResponse) + " bytes");
  }
  replacement.error = readErrno(table).value_or(0);
  table.finish();
  return replacement;
}

TimedEvent readEventTable(TomlReader& table, int devices) {
  TimedEvent event{};
  event.device = readDevice(table, devices);
  event.at_s = readTime(table);
  event.type = static_cast<uint32_t>(table.required("type", table.integer("type", 0, kWordMax)));
  event.params = table.words("params", kMaxEventParams).value_or(std::vector<uint32_t>{});
  table.finish();
  return event;
}

TimedLog readLogTable(TomlReader& table, int devices) {
  TimedLog log{};
  log.device = readDevice(table, devices);
  log.at_s = readTime(table);
  log.core = static_cast<uint8_t>(table.required(
      "core", table.choice("core", {{"FDU", FDU_CORE}, {"FRM", FRAMER_CORE}, {"CP", CP_CORE}})));
  log.line = static_cast<uint8_t>(table.integer("line", 0, 255).value_or(0));
  log.text = table.required("text", table.text("text"));
  const size_t most = log.core == FDU_CORE ? kMaxLogText : kMaxLogText / 2;
  if (log.text.size() > most) {
    table.failAt("text", "\"text\" must be at most " + std::to_string(most) + " bytes");
  }
  log.params = table.words("params", kMaxLogParams).value_or(std::vector<uint32_t>{});
  table.finish();
  return log;
}

LoopEvent readLoopEventTable(TomlReader& table) {
  LoopEvent event{};
  event.at_s = readTime(table);
  event.cut = table.boolean("cut");
  if (event.cut.has_value() == table.has("errors")) {
    table.failHere("[[loop_event]] needs either \"cut\" or \"errors\"");
  }
  if (!event.cut) {
    event.errors = table.required("errors", table.number("errors", 0, 1));
    event.for_s = table.required("for_s", table.number("for_s", 0, kLatest_s));
  }
  table.finish();
  return event;
}

DeviceEvent readDeviceEventTable(TomlReader& table) {
  using Kind = DeviceEvent::Kind;
  DeviceEvent event{};
  event.device = readModem(table);
  event.at_s = readTime(table);
  event.kind = static_cast<Kind>(
      table.required("kind", table.choice("kind", {{"hang", static_cast<int>(Kind::kHang)},
                                                   {"power_off", static_cast<int>(Kind::kPowerOff)}})));
  event.for_s = table.number("for_s", 0, kLatest_s);
  table.finish();
  return event;
}

CrashEvent readCrashTable(TomlReader& table) {
  CrashEvent crash{};
  crash.device = readModem(table);
  crash.at_s = readTime(table);
  Assertion& assertion = crash.assertion;
  assertion.processor = static_cast<Processor>(
      table.required("processor", table.choice("processor", {{"framer", static_cast<int>(Processor::kFramer)},
                                                             {"fdu", static_cast<int>(Processor::kFdu)},
                                                             {"cp", static_cast<int>(Processor::kCp)}})));
  assertion.id = static_cast<uint32_t>(table.required("assert_id", table.integer("assert_id", 0, kWordMax)));
  assertion.params = table.words("params", CPU_ASSERT_MAX_PARAMS).value_or(std::vector<uint32_t>{});
  // A symbol counter of 0 would mean that there was no assertion.
  const auto sinceStart = static_cast<uint32_t>(std::llround(crash.at_s * kSymbolRate_hz));
  const auto word = [&table](const char* key, int64_t least, uint32_t otherwise) {
    return static_cast<uint32_t>(table.integer(key, least, kWordMax).value_or(otherwise));
  };
  assertion.symbolCounter = word("symbol_counter", 1, std::max(sinceStart, 1U));
  assertion.tbmSymbol = word("tbm_symbol", 0, assertion.symbolCounter % kSymbolsPerFrame);
  assertion.tbmPhase = word("tbm_phase", 0, 0);
  assertion.tbmSample = word("tbm_sample", 0, 0);
  table.finish();
  return crash;
}

ExtcomErrors readExtcomTable(TomlReader& table, int devices) {
  constexpr double mostErrors_per_s = 1e9;
  ExtcomErrors errors{};
  errors.device = readDevice(table, devices);
  if (const auto lane = table.integer("lane", 0, EXTCOM_LANES - 1)) {
    errors.lane = static_cast<size_t>(*lane);
  }
  errors.errors_per_s = table.required("errors_per_s", table.number("errors_per_s", 0, mostErrors_per_s));
  table.finish();
  return errors;
}

FaultConfig readFaultTable(TomlReader& table, int devices) {
  FaultConfig fault{};
  fault.device = readDevice(table, devices);
  const auto request = requestByName(table.required("request", table.text("request")));
  if (!request || !mayFail(*request)) {
    table.failAt(
        "request",
        "\"request\" must be one of open, memread, memwrite, activate, imgdnld, flasherase, flashprog, "
        "logcfg, logread, eventread, farend");
  }
  fault.request = *request;
  if (table.has("address")) {
    fault.address = readAddress(table);
  }
  fault.skip = static_cast<uint32_t>(table.integer("skip", 0, kWordMax).value_or(0));
  fault.count = static_cast<uint32_t>(table.integer("count", 0, kWordMax).value_or(1));
  fault.error = readErrno(table).value_or(EIO);
  table.finish();
  return fault;
}

}  // namespace gfast::board
