#include "virtual-board/description/spectrum_table.h"

#include "virtual-board/base/line_framing.h"

namespace gfast::board {

namespace {

constexpr size_t kMostEntries = 16;  // of a list
constexpr double kMostParameter = 100;
constexpr double kMostLoss_db = 128;

uint16_t readTone(TomlReader& table, const char* key) {
  return static_cast<uint16_t>(table.required(key, table.integer(key, 0, kTones - 1)));
}

std::vector<TomlReader> readList(TomlReader& table, const char* key) {
  auto entries = table.tables(key, key);
  if (entries.size() > kMostEntries) {
    table.failAt(
        key, '"' + std::string(key) + "\" must have at most " + std::to_string(kMostEntries) + " entries");
  }
  return entries;
}

DirectionSpectrumLimits readDirection(TomlReader& table, const char* masks, const char* levels) {
  DirectionSpectrumLimits limits;
  for (TomlReader& entry : readList(table, masks)) {
    const ToneBand band{readTone(entry, "from"), readTone(entry, "to")};
    if (band.last < band.first) {
      entry.failAt("to", "\"to\" must not be below \"from\"");
    }
    entry.finish();
    limits.masked.push_back(band);
  }
  for (TomlReader& entry : readList(table, levels)) {
    const LevelPoint point{readTone(entry, "tone"),
                           entry.required("dbm_hz", entry.number("dbm_hz", kLeastLevel_dbm_hz, 0))};
    if (!limits.levels.empty() && point.tone <= limits.levels.back().tone) {
      entry.failAt("tone", "\"tone\" must rise from point to point");
    }
    entry.finish();
    limits.levels.push_back(point);
  }
  return limits;
}

PowerBackOff readBackOff(TomlReader& table) {
  PowerBackOff backOff{};
  backOff.a_dbm_hz = table.required("a", table.number("a", 0, kMostParameter));
  backOff.b_dbm_hz = table.required("b", table.number("b", 0, kMostParameter));
  backOff.reference_db = table.number("reference_db", 0, kMostLoss_db).value_or(0);
  backOff.forced_db = table.number("forced_db", 0, kMostLoss_db);
  table.finish();
  return backOff;
}

}  // namespace

SpectrumLimits readSpectrumTable(TomlReader& table) {
  SpectrumLimits limits;
  limits.downstream = readDirection(table, "carmask_ds", "psdmask_ds");
  limits.upstream = readDirection(table, "carmask_us", "psdmask_us");
  if (auto backOff = table.table("upbo", "upbo")) {
    limits.backOff = readBackOff(*backOff);
  }
  table.finish();
  return limits;
}

}  // namespace gfast::board
