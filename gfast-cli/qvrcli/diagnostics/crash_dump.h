// Reading a text dump of the chips' crash dump areas, and finding the assertion that came first.
#pragma once

#include <qvr.h>

#include <cstdint>

#include "chip/device_information.h"

namespace gfast::console {

// Where a chip keeps its device-information block, its assertion records included.
constexpr uint32_t QVR_K_CRASH_DUMP_ADDRESS = VIRT_ADDR_DEVICE_INFO_READ;

// A device-information block: words at the offsets DEV_INF_*, each stored most significant byte first.
struct DEV_INF_S {
  uint8_t bytes[DEV_INF_SIZE];
};

enum CLI_CPU_TYPE_E : uint32_t { CPU_FRAMER = 0, CPU_FDU = 1, CPU_CP = 2, CPU_LAST = 3 };

// The assertion that came first, and how many processors had theirs at the same symbol.
struct CLI_leadingAssert_t {
  uint32_t assertId;
  uint32_t symbolCounter;
  uint32_t tbmSymbol;
  uint32_t tbmPhase;
  uint32_t tbmSample;
  QVR_deviceId_t deviceId;
  QVR_lineId_t lineId;  // of a control processor, which has no line: the number of lines of its device
  CLI_CPU_TYPE_E cpuType;
  uint32_t count;
};

// Reads a dump of QVR_K_MAX_DEVICES blocks: text lines "address: word" or, with four addresses a line,
// "address: word word word word", an address of eight digits, hexadecimal in either case, as `read memory`
// shows them. Each block begins at a line with QVR_K_CRASH_DUMP_ADDRESS and goes on, whatever the addresses,
// until it is full. Lines of another form are skipped. A word that is missing or not hexadecimal counts as 0.
// Blocks, or parts of them, that the file does not hold are not changed.
//   FALSE  the file cannot be opened, or the number of addresses per line is neither 1 nor 4
BOOL loadDeviceInfoFromFile(const char* xi_filename, DEV_INF_S* xo_devInf, int xi_numberOfAddressesPerLine);

// Finds the assertion with the smallest symbol counter in QVR_K_MAX_DEVICES blocks; a counter of 0 stands for
// no assertion. Of equal ones the first counts, in the order device, framer, FDU, control processor. Without
// any assertion the record is zero.
void findLeadingAssert(const DEV_INF_S* xi_devInf, CLI_leadingAssert_t* xo_leadingAssert);

}  // namespace gfast::console
