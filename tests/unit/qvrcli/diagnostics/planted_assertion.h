// Device-information blocks with assertions in them.
#pragma once

#include <array>

#include "qvrcli/diagnostics/crash_dump.h"
#include "std/byte_order.h"

using namespace gfast;
using namespace gfast::console;

using Devices = std::array<DEV_INF_S, QVR_K_MAX_DEVICES>;

inline constexpr uint32_t kWords = DEV_INF_SIZE / 4;

// Writes one processor's assertion into a block: id, symbol counter, and the state of the time base.
inline void plant(DEV_INF_S& device, CLI_CPU_TYPE_E cpu, uint32_t id, uint32_t symbolCounter) {
  constexpr size_t info[] = {40, 84, 200};
  constexpr size_t extension[] = {168, 184, 244};
  store_be32(device.bytes + info[cpu] + 4, id);
  store_be32(device.bytes + extension[cpu], symbolCounter);
  store_be32(device.bytes + extension[cpu] + 4, id + 1);
  store_be32(device.bytes + extension[cpu] + 8, id + 2);
  store_be32(device.bytes + extension[cpu] + 12, id + 3);
}
