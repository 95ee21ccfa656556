// Reads the tables of a board file that may be repeated. Each function reads one table.
#pragma once

#include <vector>

#include "virtual-board/board/board_config.h"
#include "virtual-board/description/toml_reader.h"

namespace gfast::board {

// Bytes, or the words of a memory dump: lines "address: word" as `read memory` prints them, with up to four
// words. Words that follow each other become one overlay.
std::vector<MemoryOverlay> readMemoryTable(TomlReader& table, int devices);
FarEndReplacement readFarEndTable(TomlReader& table);
TimedEvent readEventTable(TomlReader& table, int devices);
TimedLog readLogTable(TomlReader& table, int devices);
LoopEvent readLoopEventTable(TomlReader& table);
DeviceEvent readDeviceEventTable(TomlReader& table);
CrashEvent readCrashTable(TomlReader& table);
ExtcomErrors readExtcomTable(TomlReader& table, int devices);
FaultConfig readFaultTable(TomlReader& table, int devices);

}  // namespace gfast::board
