#include "virtual-board/description/parameter_settings.h"

#include <limits>

#include "std/byte_order.h"
#include "virtual-board/chip/parameter_table.h"

namespace gfast::board {

namespace {

std::vector<uint8_t> readNumber(TomlReader& table, const char* name, uint32_t length) {
  const int64_t least =
      length == 2 ? std::numeric_limits<int16_t>::min() : std::numeric_limits<int32_t>::min();
  const int64_t most =
      length == 2 ? std::numeric_limits<uint16_t>::max() : std::numeric_limits<uint32_t>::max();
  std::vector<uint8_t> bytes(4);
  store_le32(bytes.data(), static_cast<uint32_t>(table.required(name, table.integer(name, least, most))));
  bytes.resize(length);
  return bytes;
}

std::vector<uint8_t> readString(TomlReader& table, const char* name, uint32_t length) {
  std::vector<uint8_t> bytes = table.required(name, table.bytes(name));
  if (bytes.size() != length) {
    table.failAt(name, '"' + std::string(name) + "\" must be " + std::to_string(length) + " bytes");
  }
  return bytes;
}

}  // namespace

ParameterSettings readParameterSettings(TomlReader table) {
  ParameterSettings settings;
  for (const Parameter& parameter : parameterTable()) {
    const char* name = parameterName(parameter.id);
    if (table.has(name)) {
      settings[parameter.id] = parameter.number() ? readNumber(table, name, parameter.length)
                                                  : readString(table, name, parameter.length);
    }
  }
  table.finish();
  return settings;
}

}  // namespace gfast::board
