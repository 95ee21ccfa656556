// Firmware images as the virtual chips run them: one header line, then the payload.
//
//   GFAST-IMAGE <kind> <version> <built> <checksum> <length>\n<payload>
//
// kind: "bootloader" or "application"; version: chipset.ga.rc.profile; built: YYYY-MM-DDThh:mm:ss; checksum
// and length: of the payload, as the cksum command prints them. Bytes behind the payload are ignored.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace gfast::board {

struct FirmwareVersion {
  uint8_t chipset = 0;
  uint8_t ga = 0;
  uint8_t rc = 0;
  uint8_t profile = 0;
  // Chipsets 1 and 3 are the network side of a line.
  bool networkSide() const { return chipset == 1 || chipset == 3; }
};

// Four numbers of 0..255 with dots between them.
std::optional<FirmwareVersion> parseVersion(std::string_view text);

struct Firmware {
  FirmwareVersion version;
  std::string date;  // as compilers write it: "Mar  8 2017"
  std::string time;  // "21:49:22"
};

enum class FirmwareKind { kBootloader, kApplication };

// Empty: the bytes are not an image of that kind, or the checksum is wrong.
std::optional<Firmware> parseFirmware(std::span<const uint8_t> bytes, FirmwareKind kind);

// Makes an image. `built` has the form "YYYY-MM-DDThh:mm:ss".
std::vector<uint8_t> makeFirmware(FirmwareKind kind, const FirmwareVersion& version, std::string_view built,
                                  std::span<const uint8_t> payload);

// The checksum of the cksum command (POSIX).
uint32_t cksum(std::span<const uint8_t> bytes);

}  // namespace gfast::board
