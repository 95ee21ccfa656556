#include "virtual-board/description/line_fault_tables.h"

#include <iterator>

namespace gfast::board {

namespace {

using FaultKind = LineFault::Kind;

constexpr double kShortest_s = 1e-3;
constexpr double kLongestFault_m = 2000;
constexpr double kHighest_mhz = 212;
constexpr size_t kMostPoints = 64;

void readTimes(TomlReader& table, FaultTimes& times) {
  times.at_s = table.number("at_s", 0, kLatest_s).value_or(0);
  times.for_s = table.number("for_s", kShortest_s, kLatest_s);
  times.every_s = table.number("every_s", kShortest_s, kLatest_s);
  if (times.every_s && times.for_s.value_or(kLatest_s) >= *times.every_s) {
    table.failAt("every_s", "\"every_s\" must be longer than \"for_s\"");
  }
}

double needed(TomlReader& table, const char* key, double least, double most) {
  return table.required(key, table.number(key, least, most));
}

double level(TomlReader& table) {
  return needed(table, "level_dbm_hz", kLeastLevel_dbm_hz, 0);
}

LineFault::Shape readShape(TomlReader& table) {
  LineFault::Shape shape;
  for (TomlReader& point : table.tables("shape", "shape")) {
    const double mhz = needed(point, "mhz", 0, kHighest_mhz);
    shape.emplace_back(mhz, needed(point, "dbm_hz", kLeastLevel_dbm_hz, 0));
    point.finish();
    if (shape.size() > 1 && mhz < shape[shape.size() - 2].first) {
      point.failAt("mhz", "\"mhz\" must not fall from point to point");
    }
  }
  if (shape.size() < 2 || shape.size() > kMostPoints) {
    table.failAt("shape", "\"shape\" must have 2 to " + std::to_string(kMostPoints) + " points");
  }
  return shape;
}

void readLevels(TomlReader& table, LineFault& fault) {
  if (table.has("level_dbm_hz") == table.has("shape")) {
    table.failHere("[[line_fault]] needs either \"level_dbm_hz\" or \"shape\"");
  }
  if (table.has("shape")) {
    fault.shape = readShape(table);
  } else {
    fault.level_dbm_hz = level(table);
  }
}

void readStretch(TomlReader& table, LineFault& fault) {
  fault.length_m = needed(table, "length_m", 0, kLongestFault_m);
}

void readJoint(TomlReader& table, LineFault& fault) {
  constexpr double most_ohm = 1e9;
  constexpr double most_nf = 1e6;
  fault.ohm = needed(table, "ohm", 0, most_ohm);
  if (const auto nf = table.number("nf", 0, most_nf)) {
    fault.farad = *nf * 1e-9;
  }
  fault.oneWire = table.integer("wires", 1, 2).value_or(2) == 1;
}

void readSection(TomlReader& table, LineFault& fault) {
  readStretch(table, fault);
  fault.cable = table.required("cable", readCable(table));
}

void readWater(TomlReader& table, LineFault& fault) {
  constexpr double usual_s = 600;
  readStretch(table, fault);
  fault.grows_s = table.number("grows_s", 0, kLatest_s).value_or(usual_s);
}

void readRadio(TomlReader& table, LineFault& fault) {
  constexpr double usual_khz = 9;
  fault.frequency_hz = needed(table, "frequency_mhz", 0, kHighest_mhz) * 1e6;
  fault.width_hz = table.number("width_khz", 0.1, 20000).value_or(usual_khz) * 1e3;
  fault.level_dbm_hz = level(table);
}

void readImbalance(TomlReader& table, LineFault& fault) {
  fault.balance_db = needed(table, "balance_db", 0, 100);
}

void readCrosstalk(TomlReader& table, LineFault& fault) {
  constexpr double mostLines = 100;
  readStretch(table, fault);
  fault.lines = needed(table, "lines", 1, mostLines);
  fault.level_dbm_hz = level(table);
  fault.last_hz = table.number("to_mhz", 0, kHighest_mhz).value_or(kHighest_mhz) * 1e6;
  fault.vectored = table.boolean("vectored").value_or(false);
}

// A single impulse is there for its own length.
void readImpulse(TomlReader& table, LineFault& fault) {
  constexpr double most_ms = 10000;
  constexpr double most_hz = 1000;
  readLevels(table, fault);
  fault.length_s = needed(table, "length_ms", 0.001, most_ms) / 1e3;
  fault.rate_hz = table.number("rate_hz", 0, most_hz).value_or(0);
  if (fault.rate_hz > 0) {
    return;
  }
  if (fault.times.for_s) {
    table.failAt("for_s", "\"for_s\" needs impulses with a \"rate_hz\"");
  }
  fault.times.for_s = fault.length_s;
}

void readSupply(TomlReader& table, LineFault& fault) {
  fault.level_dbm_hz = level(table);
  fault.frequency_hz = needed(table, "switching_khz", 1, 10000) * 1e3;
}

// By kind.
constexpr void (*kReaders[])(TomlReader&, LineFault&) = {readStretch, readJoint, readSection,   readWater,
                                                         readLevels,  readRadio, readImbalance, readCrosstalk,
                                                         readImpulse, readSupply};

}  // namespace

std::optional<std::string> readCable(TomlReader& table) {
  static constexpr const char* cables[] = {"CAD55", "CAT5", "T05u", "T05b", "T05h"};
  const auto cable =
      table.choice("cable", {{cables[0], 0}, {cables[1], 1}, {cables[2], 2}, {cables[3], 3}, {cables[4], 4}});
  return cable ? std::optional<std::string>(cables[*cable]) : std::nullopt;
}

LineFault readLineFaultTable(TomlReader& table, const LoopConfig& loop) {
  static constexpr const char* names[] = {"tap",   "joint",     "section",   "water",   "noise",
                                          "radio", "imbalance", "crosstalk", "impulse", "supply"};
  static_assert(std::size(names) == std::size(kReaders));
  const int kind = table.required("kind", table.choice("kind", {{names[0], 0},
                                                                {names[1], 1},
                                                                {names[2], 2},
                                                                {names[3], 3},
                                                                {names[4], 4},
                                                                {names[5], 5},
                                                                {names[6], 6},
                                                                {names[7], 7},
                                                                {names[8], 8},
                                                                {names[9], 9}}));
  LineFault fault;
  fault.kind = static_cast<FaultKind>(kind);
  readTimes(table, fault.times);
  fault.at_m = needed(table, "at_m", 0, loop.length_m);
  kReaders[kind](table, fault);
  table.finish();
  return fault;
}

}  // namespace gfast::board
