// Chip memory.
#pragma once

#include <qvr.h>

#include <cstdint>
#include <cstdio>
#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> memoryCommands();

// Writes chip memory to an open file, one line per 4 bytes as `read memory` shows them. What could not be
// read is reported on standard output and dumped as zeros.
void dumpMemoryToFile(FILE* file, QVR_deviceId_t deviceId, uint32_t address, uint32_t length);

}  // namespace gfast::console
