// A console in front of chips that process two subcarriers, 100 and 101: the requests, and the chips'
// answers.
#pragma once

#include <gfast_api.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>

#include "unit/qvrcli/typed_console.h"
#include "unit/sdk/lines.h"

using namespace gfast;
using namespace gfast::console;

constexpr uint32_t kFirstTone = 100;
constexpr uint32_t kTones = 2;

// A folder for files that a command writes. It is removed at the end.
class ScratchFolder {
 public:
  ScratchFolder() : path_(mkdtemp(name_)) {}
  ~ScratchFolder() {
    unlink(file().c_str());
    rmdir(path_.c_str());
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string file() const { return path_ + "/table.txt"; }
  std::string content() const {
    std::ifstream stream(file(), std::ios::binary);
    return stream.is_open() ? std::string(std::istreambuf_iterator<char>(stream), {}) : "no file";
  }

 private:
  char name_[28] = "/tmp/gfast-console-XXXXXX";
  std::string path_;
};

class ToneConsole : public TypedConsole {
 protected:
  ToneConsole() {
    enterBothLines();
    expect(opens(0) + opens(1));
    QVR_deviceHandle(0);
    QVR_deviceHandle(1);
  }

  // Little-endian values of 16 or 32 bits.
  static Bytes halves(const std::vector<int>& values) {
    Bytes bytes(2 * values.size());
    for (size_t i = 0; i < values.size(); i++) {
      store_le16(&bytes[2 * i], static_cast<uint16_t>(values[i]));
    }
    return bytes;
  }
  static Bytes words(const std::vector<uint32_t>& values) {
    Bytes bytes(4 * values.size());
    for (size_t i = 0; i < values.size(); i++) {
      store_le32(&bytes[4 * i], values[i]);
    }
    return bytes;
  }

  // The check that the line is up, and its processed subcarriers.
  static Script findsLineUp(int device) { return readsIdentity(device, chipWithLine(LS_SHOWTIME)); }
  static Script readsFraming(int device, uint32_t firstTone = kFirstTone, uint32_t tones = kTones) {
    std::vector<uint32_t> framing(18);
    framing[2] = firstTone;
    framing[3] = tones;
    return reads(device, 0xE2400000, words(framing));
  }
  static Script findsTones(int device) { return findsLineUp(device) + readsFraming(device); }

  // The chip sends or receives on subcarriers 100 and 101.
  static Script readsSet(int device, bool sent) {
    std::vector<int> set(66);
    set[0] = kFirstTone;
    set[1] = kFirstTone + kTones - 1;
    set[64] = 1;
    set[65] = kTones;
    return reads(device, sent ? 0xE6080000 : 0xE6000000, halves(set));
  }

  // 5 bits where the chip sends, 9 where it receives, and a pilot.
  static Script readsLoading(int device, bool sent) {
    return reads(device, sent ? 0xE5000000 : 0xE5001000, loading(sent));
  }
  static Bytes loading(bool sent) { return halves({100 << 4 | (sent ? 5 : 9), 101 << 4 | 15}); }

  // SNRs of 70.2 dB and 10.3 dB.
  static Script readsEnergies(int device) {
    std::vector<uint32_t> scaling(13);
    scaling[2] = 1000;  // window size
    scaling[3] = 20;    // scale
    return reads(device, 0xE4180000 + 4 * kFirstTone, words({7, 7, 100, 97859000})) +
           reads(device, 0xE2000000, words(scaling));
  }

  // The same two SNRs, as the far end reports them.
  static Script asksFarEndSnr(int device) {
    Bytes answer(2 + kFirstTone + kTones, 0xFF);
    answer[2 + 100] = 203;  // 69.5 dB
    answer[2 + 101] = 84;   // 10 dB
    return asksFarEndSnr(device, answer);
  }
  static Script asksFarEndSnr(int device, const Bytes& answer) {
    return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, {4, 0, 0, 101, 0},
                         2 + kFirstTone + kTones, answer);
  }

  // Receive levels of -57.5 dBm/Hz and -45.5 dBm/Hz behind a gain of 10 dB, without the canceller.
  static Script readsReceived(int device, bool far = false) {
    return memory(device, far, 0xE4080000, halves({0, 4096, 4096, 0})) +
           memory(device, far, 0xE4100000, {2, 0}) + readsFrontEnd(device, far);
  }
  static Script readsFrontEnd(int device, bool far = false) {
    return memory(device, far, 0xE4280000, words({0xFFFFFF4A})) +
           memory(device, far, 0xE4300000, words({0xFFFFFFFE}));
  }

  // Both are sent at -60 dBm/Hz before the line driver.
  static Script readsSent(int device, bool far = false) {
    return memory(device, far, 0xE4200000, halves({-6000, -6000}));
  }
  static Script readsSentAmplitudes(int device, bool far) {
    return memory(device, far, 0xE4240000, halves({16384, 16384}));
  }

  // Chip memory at either end of the line.
  static Script memory(int device, bool far, uint32_t address, const Bytes& bytes) {
    if (!far) {
      return reads(device, address, bytes);
    }
    Bytes answer = farEndHeader(0x8002, bytes.size(), 0, address);
    answer.resize(answer.size() + bytes.size());
    std::ranges::copy(bytes, answer.end() - static_cast<ptrdiff_t>(bytes.size()));
    return asksFarEndMemory(device, 0, address, bytes.size(), answer);
  }

  // Exchanges over far-end memory are numbered one after the other.
  void expect(const Script& script) {
    Script numbered;
    for (ExpectedCall call : script.calls()) {
      if (call.code == DFEIOCFARENDMSG &&
          call.request.req_u.farendmsg.farend_msg_req_type == MGMT_FAR_END_REQ_TYPE_READMEM) {
        store_le16(&call.in[4], ++exchanges_);
        store_le16(&call.out[4], exchanges_);
      }
      numbered = numbered + Script(call);
    }
    TypedConsole::expect(numbered);
  }

  ScratchFolder scratch_;

 private:
  uint16_t exchanges_ = 0;  // over far-end memory in this process
};

// A label and its value, as they stand in their columns.
inline std::string labelled(const std::string& label, const std::string& value) {
  return label + std::string(22 - label.size(), ' ') + value;
}

// The rows, each with a line end.
inline std::string fileOf(const Lines& rows) {
  std::string text;
  for (const std::string& row : rows) {
    text += row + '\n';
  }
  return text;
}
