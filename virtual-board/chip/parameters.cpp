#include "virtual-board/chip/parameters.h"

#include <gfast_api.h>

#include <algorithm>
#include <utility>

#include "chip/parameter_records.h"
#include "chip/registers.h"
#include "std/byte_order.h"

namespace gfast::board {

namespace {

constexpr uint32_t kStartupArea = VIRT_BASE_ADDR_CONFIGURATION_PARAMS;
constexpr uint32_t kHeaderSize = PARAMS_DICTIONARY_HEADER_SIZE;
constexpr uint32_t kDictionarySize = PARAMS_Last * 4;

std::span<const uint8_t> part(const Bytes& area, const Parameter& parameter) {
  return std::span(area).subspan(parameter.offset, parameter.length);
}

void setPart(Bytes& area, const Parameter& parameter, std::span<const uint8_t> value) {
  std::copy(value.begin(), value.end(), area.begin() + parameter.offset);
}

bool differs(const Bytes& one, const Bytes& other, const Parameter& parameter) {
  return !std::ranges::equal(part(one, parameter), part(other, parameter));
}

}  // namespace

void Parameters::powerUp() {
  startup_.assign(parameterAreaSize(), 0);
  for (const Parameter& parameter : parameterTable()) {
    uint64_t rest = parameter.initial;
    for (uint32_t i = 0; i < parameter.length; i++, rest >>= 8) {
      startup_[parameter.offset + i] = static_cast<uint8_t>(rest);
    }
  }
  for (const auto& [id, value] : settings_) {
    setPart(startup_, parameterTable()[id], value);
  }
  running_ = startup_;
}

void Parameters::map(AddressSpace& memory, Firmware firmware) {
  firmware_ = std::move(firmware);
  const auto shown = [this](const Bytes& area) { return firmware_.runs() ? area : Bytes(area.size()); };
  const auto size = static_cast<uint32_t>(startup_.size());
  memory.add({VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY,
              kHeaderSize + kDictionarySize,
              [this, shown] { return shown(dictionary()); },
              {},
              {}});
  memory.add({kStartupArea,
              size,
              [this, shown] { return shown(startup_); },
              [this](const Bytes& bytes) { startupWritten(bytes); },
              {}});
  memory.add({VIRT_ADDR_CONFIG_PER_LINE(0),
              size,
              [this, shown] { return shown(running_); },
              [this](const Bytes& bytes) { lineWritten(bytes); },
              {}});
}

uint32_t Parameters::running(eConstParams id) const {
  uint8_t bytes[4] = {};
  const auto value = part(running_, parameterTable()[id]);
  std::copy_n(value.begin(), std::min(value.size(), sizeof bytes), bytes);
  return load_le32(bytes);
}

Bytes Parameters::dictionary() const {
  Bytes bytes(kHeaderSize + kDictionarySize);
  store_le32(&bytes[PARAMS_DICTIONARY_ADDRESS], kStartupArea);
  store_le32(&bytes[PARAMS_DICTIONARY_PARAMS_SIZE], static_cast<uint32_t>(startup_.size()));
  store_le32(&bytes[PARAMS_DICTIONARY_SIZE], kDictionarySize);
  for (const Parameter& parameter : parameterTable()) {
    store_le32(
        &bytes[kHeaderSize + 4 * parameter.id],
        PARAMS_ENTRY(parameter.id, parameter.length, parameter.offset, parameter.state, parameter.type));
  }
  return bytes;
}

void Parameters::startupWritten(const Bytes& bytes) {
  if (!firmware_.runs()) {
    return;
  }
  const bool restartNeeded = std::ranges::any_of(parameterTable(), [&](const Parameter& parameter) {
    return parameter.state == CONFIG_STATE_SYSTEM && differs(startup_, bytes, parameter);
  });
  startup_ = bytes;
  if (restartNeeded) {
    firmware_.restartNeeded();
  }
}

void Parameters::lineWritten(const Bytes& bytes) {
  if (!firmware_.runs()) {
    return;
  }
  for (const Parameter& parameter : parameterTable()) {
    if (parameter.lineLevel()) {
      setPart(running_, parameter, part(bytes, parameter));
    }
  }
}

}  // namespace gfast::board
