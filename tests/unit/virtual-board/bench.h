// A board that a test sends requests to. Results are bytes or error names as text; the test sets the time.
#pragma once

#include <gfast_api.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "chip/boot_register.h"
#include "chip/registers.h"
#include "std/byte_order.h"
#include "std/errno_names.h"
#include "unit/virtual-board/temp_file.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/description/board_file.h"

using namespace gfast;
using namespace gfast::board;

inline std::string hex(const void* bytes, size_t length) {
  std::string text;
  for (size_t i = 0; i < length; i++) {
    char pair[4];
    std::snprintf(pair, sizeof pair, i == 0 ? "%02x" : " %02x", static_cast<const uint8_t*>(bytes)[i]);
    text += pair;
  }
  return text;
}

inline std::string zeros(size_t length) {
  return hex(std::vector<uint8_t>(length).data(), length);
}

inline std::vector<uint8_t> fromHex(const std::string& text) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 3) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

struct Bench {
  explicit Bench(const BoardConfig& config = BoardConfig())
      : board(config, [this] { return now; }), descriptors{board.open(0), board.open(1)} {}
  // From a board file's text.
  explicit Bench(const std::string& toml) : Bench(parseBoard(toml, "board.toml")) {}

  double now = 0;
  VirtualBoard board;
  std::array<int, 2> descriptors;
  gfast_iocreq request{};

  void wait(double seconds) {
    now += seconds;
    board.advance();
  }

  // "ok", or the error's name.
  std::string send(int device, uint32_t code) {
    const int result = board.request(descriptors[static_cast<size_t>(device)], code, request);
    return result < 0 ? errnoName(errno) : "ok";
  }

  // The bytes in hexadecimal, or the error's name.
  std::string read(int device, uint32_t address, uint16_t length) {
    std::vector<char> buffer(length);
    request = {};
    request.req_u.memread = {address, length, buffer.data(), length, 0, 0};
    const std::string result = send(device, DFEIOCMEMRD);
    return result == "ok" ? hex(buffer.data(), request.req_u.memread.datalen_copied_to_user) : result;
  }

  std::string write(int device, uint32_t address, const std::string& bytes) {
    auto buffer = fromHex(bytes);
    const auto length = static_cast<uint16_t>(buffer.size());
    request = {};
    request.req_u.memwrite = {address, length, reinterpret_cast<char*>(buffer.data()), length};
    return send(device, DFEIOCMEMWR);
  }

  uint32_t word(int device, uint32_t address) {
    const auto bytes = fromHex(read(device, address, 4));
    return bytes.size() == 4 ? load_le32(bytes.data()) : 0;
  }
  std::string writeWord(int device, uint32_t address, uint32_t value) {
    uint8_t bytes[4];
    store_le32(bytes, value);
    return write(device, address, hex(bytes, 4));
  }

  uint32_t sbr(int device) { return word(device, SBR_REG_ADDRESS); }
  uint32_t stage(int device) { return SBR_FW_STATE(sbr(device)); }
  uint32_t lineState(int device) { return word(device, VIRT_ADDR_B0_REGS + B0_REGS_LINK_STATES); }

  // What a host does to reboot a chip: it selects the stage, clears the reset counters and resets.
  void reboot(int device, bool disableFlash, bool disableFlashOverride) {
    const uint32_t value = ((sbr(device) | 0x210U) & 0x81FFFEFEU) | (disableFlash ? 1U : 0U) |
                           (disableFlashOverride ? 0x100U : 0U);
    writeWord(device, SBR_REG_ADDRESS, value);
    writeWord(device, PLL_MUX_REG_ADDRESS, 0);
    writeWord(device, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
  }
  void rebootToB0(int device) { reboot(device, true, false); }
  void rebootToB1(int device) { reboot(device, false, true); }
  void rebootToApp(int device) { reboot(device, false, false); }

  std::string erase(int device, uint16_t type, uint32_t address) {
    request = {};
    request.req_u.flasherase = {address, 0, type};
    return send(device, DFEIOCFLASHERASE);
  }

  std::string program(int device, const std::string& file, uint32_t address) {
    request = {};
    file.copy(request.req_u.flashprog.fw_filename, MAX_FW_FN_SIZE);
    request.req_u.flashprog.hw_flash_addr = address;
    return send(device, DFEIOCFLASHPROG);
  }

  std::string download(int device, const std::string& file) {
    request = {};
    file.copy(request.req_u.imgdnld.fw_filename, MAX_FW_FN_SIZE);
    return send(device, DFEIOCIMGDNLD);
  }

  std::string activate(int device, uint32_t address) {
    request = {};
    request.req_u.activate.hw_mem_addr = address;
    return send(device, DFEIOCIMGACT);
  }

  std::string readFlash(int device, uint32_t address, uint16_t length) {
    std::vector<char> buffer(length);
    request = {};
    request.req_u.flashread = {address, length, buffer.data(), length, 0, 0};
    const std::string result = send(device, DFEIOCFLASHRD);
    return result == "ok" ? hex(buffer.data(), length) : result;
  }

  std::string enableLogs(int device) {
    char body[GFAST_LOGCFG_BODY_SIZE] = {};
    request = {};
    request.req_u.logcfg = {body, sizeof body};
    return send(device, DFEIOCLOGCFG);
  }

  // One record without its time stamp, "" when nothing is pending, or the error's name.
  std::string event(int device, uint32_t bufferSize = QVR_K_MAX_EVT_BUFFER_LEN) {
    std::vector<char> buffer(bufferSize);
    request = {};
    request.req_u.logalm_read = {buffer.data(), bufferSize, 0, 0};
    const std::string result = send(device, DFEIOCALMRD);
    const uint32_t length = request.req_u.logalm_read.datalen_copied_to_user;
    return result != "ok" ? result : length == 0 ? "" : hex(buffer.data() + 8, length - 8);
  }

  std::string logs(int device, uint32_t bufferSize = QVR_K_MAX_EVT_BUFFER_LEN) {
    std::vector<char> buffer(bufferSize);
    request = {};
    request.req_u.logalm_read = {buffer.data(), bufferSize, 0, 0};
    const std::string result = send(device, DFEIOCLOGRD);
    return result != "ok" ? result : hex(buffer.data(), request.req_u.logalm_read.datalen_copied_to_user);
  }

  // The link-state changes and other events that are pending: "3>4 4>5", "boot", "failure 6", "type 9".
  std::string events(int device) {
    std::string text;
    for (std::string record = event(device); !record.empty(); record = event(device)) {
      const auto bytes = fromHex(record);
      const uint32_t type = load_le32(bytes.data());
      const auto param = [&bytes](size_t i) { return std::to_string(load_le32(bytes.data() + 4 + 4 * i)); };
      text += text.empty() ? "" : " ";
      text += type == EVENT_TYPE_LINKS_STATUS_CHANGED ? param(0) + '>' + param(1)
              : type == EVENT_TYPE_BOOT_SUCCEEDED     ? "boot"
              : type == EVENT_TYPE_LINE_FAILURE       ? "failure " + param(0)
                                                      : "type " + std::to_string(type);
    }
    return text;
  }

  std::string farEnd(int device, uint16_t type, uint32_t bufferSize = 64, uint16_t port = 0) {
    std::vector<char> buffer(bufferSize);
    request = {};
    request.req_u.farendmsg = {port, type, buffer.data(), bufferSize, 0, bufferSize, 0};
    const std::string result = send(device, DFEIOCFARENDMSG);
    return result == "ok" ? hex(buffer.data(), request.req_u.farendmsg.datalen_copied_to_user) : result;
  }

  // A far-end message with a body.
  std::string ask(int device, uint16_t type, const std::string& body, uint32_t bufferSize = 600) {
    const auto bytes = fromHex(body);
    std::vector<char> buffer(std::max<size_t>(bufferSize, bytes.size()));
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    request = {};
    request.req_u.farendmsg = {
        0, type, buffer.data(), bufferSize, static_cast<uint32_t>(bytes.size()), bufferSize, 0};
    const std::string result = send(device, DFEIOCFARENDMSG);
    return result == "ok" ? hex(buffer.data(), request.req_u.farendmsg.datalen_copied_to_user) : result;
  }

  // A record of 32-bit words, read in one request.
  template <typename Block>
  Block block(int device, uint32_t address) {
    return record<Block>(read(device, address, sizeof(Block)));
  }
  template <typename Block>
  static Block record(const std::string& text) {
    const auto bytes = fromHex(text);
    std::array<uint32_t, sizeof(Block) / 4> words{};
    for (size_t i = 0; i < words.size() && bytes.size() == sizeof(Block); i++) {
      words[i] = load_le32(bytes.data() + 4 * i);
    }
    Block block;
    std::memcpy(&block, words.data(), sizeof block);
    return block;
  }

  bool readable(int device) {
    pollfd descriptor{descriptors[static_cast<size_t>(device)], POLLIN, 0};
    return ::poll(&descriptor, 1, 0) == 1;
  }
};

// A board file's text: the line is in showtime at power-up, and what `toml` adds.
constexpr const char* kShowtime = "[[device]]\nline = \"showtime\"\n";
inline std::string withShowtime(const std::string& toml) {
  return kShowtime + toml;
}

// From any state, a line is in showtime after this time.
constexpr double kTrainingTime_s = 6.0;
