#include "virtual-board/chip/firmware_image.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace gfast::board {

namespace {

constexpr std::string_view kMagic = "GFAST-IMAGE";
constexpr size_t kMaxHeader = 200;  // bytes of the header line

const char* kindName(FirmwareKind kind) {
  return kind == FirmwareKind::kBootloader ? "bootloader" : "application";
}

template <typename T>
bool parseNumber(std::string_view text, T& value) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc{} && result.ptr == end;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const size_t end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      return pieces;
    }
    text.remove_prefix(end + 1);
  }
}

// Splits "2017-03-08T21:49:22" into date and time as compilers write them.
bool parseBuilt(std::string_view built, Firmware& firmware) {
  static constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                           "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  constexpr std::string_view shape = "dddd-dd-ddTdd:dd:dd";
  const bool fits = std::equal(built.begin(), built.end(), shape.begin(), shape.end(),
                               [](char c, char s) { return s == 'd' ? c >= '0' && c <= '9' : c == s; });
  unsigned month = 0;
  if (!fits || !parseNumber(built.substr(5, 2), month) || month < 1 || month > 12) {
    return false;
  }
  std::string day(built.substr(8, 2));
  if (day[0] == '0') {
    day[0] = ' ';
  }
  firmware.date = std::string(months[month - 1]) + ' ' + day + ' ' + std::string(built.substr(0, 4));
  firmware.time = built.substr(11);
  return true;
}

std::array<uint32_t, 256> crcTable() {
  std::array<uint32_t, 256> table{};
  for (uint32_t i = 0; i < table.size(); i++) {
    uint32_t crc = i << 24;
    for (int bit = 0; bit < 8; bit++) {
      crc = (crc & 0x80000000U) != 0 ? (crc << 1) ^ 0x04C11DB7U : crc << 1;
    }
    table[i] = crc;
  }
  return table;
}

}  // namespace

uint32_t cksum(std::span<const uint8_t> bytes) {
  static const std::array<uint32_t, 256> table = crcTable();
  uint32_t crc = 0;
  const auto add = [&crc](uint8_t byte) { crc = (crc << 8) ^ table[(crc >> 24) ^ byte]; };
  std::for_each(bytes.begin(), bytes.end(), add);
  for (size_t length = bytes.size(); length != 0; length >>= 8) {
    add(static_cast<uint8_t>(length));
  }
  return ~crc;
}

std::optional<FirmwareVersion> parseVersion(std::string_view text) {
  FirmwareVersion version;
  uint8_t* const fields[] = {&version.chipset, &version.ga, &version.rc, &version.profile};
  const auto numbers = split(text, '.');
  if (numbers.size() != std::size(fields)) {
    return std::nullopt;
  }
  for (size_t i = 0; i < numbers.size(); i++) {
    if (!parseNumber(numbers[i], *fields[i])) {
      return std::nullopt;
    }
  }
  return version;
}

std::optional<Firmware> parseFirmware(std::span<const uint8_t> bytes, FirmwareKind kind) {
  const auto head = bytes.first(std::min(bytes.size(), kMaxHeader));
  const auto lineEnd = std::find(head.begin(), head.end(), uint8_t{'\n'});
  if (lineEnd == head.end()) {
    return std::nullopt;
  }
  const std::string line(head.begin(), lineEnd);
  const auto fields = split(line, ' ');
  if (fields.size() != 6 || fields[0] != kMagic || fields[1] != kindName(kind)) {
    return std::nullopt;
  }
  const auto version = parseVersion(fields[2]);
  Firmware firmware;
  uint32_t checksum = 0;
  size_t length = 0;
  if (!version || !parseBuilt(fields[3], firmware) || !parseNumber(fields[4], checksum) ||
      !parseNumber(fields[5], length)) {
    return std::nullopt;
  }
  firmware.version = *version;
  const auto payload = bytes.subspan(line.size() + 1);
  if (length > payload.size() || cksum(payload.first(length)) != checksum) {
    return std::nullopt;
  }
  return firmware;
}

std::vector<uint8_t> makeFirmware(FirmwareKind kind, const FirmwareVersion& version, std::string_view built,
                                  std::span<const uint8_t> payload) {
  std::ostringstream header;
  header << kMagic << ' ' << kindName(kind) << ' ' << unsigned{version.chipset} << '.' << unsigned{version.ga}
         << '.' << unsigned{version.rc} << '.' << unsigned{version.profile} << ' ' << built << ' '
         << cksum(payload) << ' ' << payload.size() << '\n';
  const std::string text = header.str();
  std::vector<uint8_t> image(text.begin(), text.end());
  image.insert(image.end(), payload.begin(), payload.end());
  return image;
}

}  // namespace gfast::board
