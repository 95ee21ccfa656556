#include "qvrcli/device/memory_commands.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "chip/boot_register.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/arguments.h"
#include "qvrcli/text/table_output.h"
#include "std/byte_order.h"

namespace gfast::console {

namespace {

constexpr int kMaxLength = 65536;  // bytes one command reads or writes
constexpr int kBadArgument = 1;    // returned to libcli for a bad address or read length

constexpr auto kRow = FMT_COMPILE("{:8x}: {:08x}");  // of an address and its word

// Prints every 4 bytes as a word; what is missing from the last word is zero.
template <typename PrintWord>
void printWords(uint32_t address, const uint8_t* bytes, uint32_t length, PrintWord printWord) {
  for (uint32_t i = 0; i < length; i += 4) {
    uint8_t word[4] = {};
    std::memcpy(word, bytes + i, std::min<uint32_t>(4, length - i));
    printWord(address + i, load_le32(word));
  }
}

// The first word is a device at the near end, and a line whose far end is read otherwise. False after a
// message.
bool readMemory(cli_def* cli, ArgumentReader& words, End end, uint32_t address, std::vector<uint8_t>& bytes) {
  const bool near = end == End::kNear;
  const int id = near ? words.device(0, "invalid device number") : words.line(0, "invalid line number");
  if (words.refused()) {
    return false;
  }
  const auto read = near ? QVR_readmem : QVR_readmemFarEnd;
  const QVR_retval_t status = read(id, address, bytes.data(), static_cast<uint32_t>(bytes.size()));
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "readmem error (%1d)", static_cast<int>(status));
    return false;
  }
  return true;
}

// Bytes in hexadecimal, separated by colons. What does not fit is left out; false after a message.
bool parseBytes(cli_def* cli, std::string_view text, std::vector<uint8_t>& bytes) {
  size_t stored = 0;
  for (;;) {
    const size_t colon = text.find(':');
    const std::string piece(text.substr(0, colon));
    uint32_t value = 0;
    if (!parseHex(piece.c_str(), &value)) {
      cli_print(cli, "expecting hex byte, received %s", piece.c_str());
      return false;
    }
    if (value > 0xFF) {
      cli_print(cli, "hex byte must be between 0x00 and 0xFF");
      return false;
    }
    if (stored < bytes.size()) {
      bytes[stored++] = static_cast<uint8_t>(value);
    }
    if (colon == std::string_view::npos) {
      return true;
    }
    text.remove_prefix(colon + 1);
  }
}

bool parseData(cli_def* cli, const char* text, std::vector<uint8_t>& bytes) {
  uint32_t word = 0;
  if (bytes.size() == 4 && std::strchr(text, ':') == nullptr && parseHex(text, &word)) {
    store_be32(bytes.data(), word);  // as the board's processor stores it: `read memory` shows it reversed
    return true;
  }
  return parseBytes(cli, text, bytes);
}

int CLI_readMemory(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const uint32_t address = words.hexadecimal(1, "readmem invalid memaddr ({})");
  const int length =
      words.number(2, 1, kMaxLength, "readmem invalid data len ({}) - must be between 1 and 65536", 0);
  if (words.refused()) {
    return kBadArgument;
  }
  const End end = words.end(3, "parameter must be ne or fe", OtherWord::kNearEnd);
  std::vector<uint8_t> bytes(static_cast<size_t>(length));
  if (readMemory(cli, words, end, address, bytes)) {
    TableOutput out(cli);
    printWords(address, bytes.data(), static_cast<uint32_t>(length),
               [&out](uint32_t at, uint32_t word) { out.row(kRow, at, word); });
    out.finish();
  }
  return CLI_OK;
}

int CLI_readSBR(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  constexpr QVR_deviceId_t device = 0;
  uint8_t sbr[4] = {};
  if (QVR_STATUS_ERROR(QVR_readmem(device, SBR_REG_ADDRESS, sbr, sizeof sbr))) {
    cli_print(cli, "Failed reading SBR for device %d", device);
  } else {
    cli_print(cli, "SBR=%08x", load_be32(sbr));  // as it lies in device memory
  }
  return CLI_OK;
}

int CLI_writeMemory(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_deviceId_t device = words.device(0, "invalid device number");
  if (words.refused()) {
    return CLI_OK;
  }
  const uint32_t address = words.hexadecimal(1, "writemem invalid memaddr ({})");
  if (words.refused()) {
    return kBadArgument;
  }
  const int length = words.number(2, 0, kMaxLength, "writemem invalid data len ({})", 0);
  if (words.refused()) {
    return CLI_OK;
  }
  std::vector<uint8_t> bytes(static_cast<size_t>(length));
  if (!parseData(cli, words.text(3, ""), bytes)) {
    return CLI_OK;
  }
  const QVR_retval_t status = QVR_writemem(device, address, bytes.data(), static_cast<uint32_t>(length));
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "writemem Failed (%1d)", static_cast<int>(status));
  }
  return CLI_OK;
}

constexpr Command kMemoryCommands[] = {
    exec("read memory", "Read memory from device", CLI_readMemory, atLeast<3>, kReads,
         "read memory <device-id | line-id> <address> <length> [(ne | fe)]"),
    exec("read sbr", "Read software boot register (SBR)", CLI_readSBR, between<0, 1>, kReads,
         "read sbr <device-id> [ 0 ]"),
    exec("write memory", "Write to device memory", CLI_writeMemory, atLeast<4>, kChanges,
         "write memory <device-id> <address> <length> <data> : data either at xx:xx:xx... or hex value"),
};

}  // namespace

std::span<const Command> memoryCommands() {
  return kMemoryCommands;
}

void dumpMemoryToFile(FILE* file, QVR_deviceId_t deviceId, uint32_t address, uint32_t length) {
  const std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[length]());
  if (bytes == nullptr) {
    std::printf("Failed allocating buffer of size %1u bytes\n", length);
    return;
  }
  if (QVR_STATUS_ERROR(QVR_readmem(deviceId, address, bytes.get(), length))) {
    std::printf("Failed reading memory from %1u bytes from device %d at address %08X", length, deviceId,
                address);
  }
  printWords(address, bytes.get(), length, [file](uint32_t at, uint32_t word) {
    std::fprintf(file, "%s\n", fmt::format(kRow, at, word).c_str());
  });
}

}  // namespace gfast::console
