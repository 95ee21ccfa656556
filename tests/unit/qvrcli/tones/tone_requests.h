// A console in front of chips that process two subcarriers, 100 and 101: the requests, and the chips'
// answers.
#pragma once

#include <algorithm>
#include <string>

#include "support/far_end_memory.h"
#include "support/lines.h"
#include "support/temporary_folder.h"
#include "support/tones.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

constexpr uint32_t kFirstTone = 100;
constexpr uint32_t kTones = 2;

// A file that a command writes, in a folder of its own.
class WrittenFile {
 public:
  const std::string& path() const { return folder_.path(); }
  std::string file() const { return folder_.file("table.txt"); }
  std::string content() const { return folder_.has("table.txt") ? folder_.read("table.txt") : "no file"; }

 private:
  TemporaryFolder folder_;
};

class ToneConsole : public TypedConsole {
 protected:
  ToneConsole() {
    enterBothLines();
    expect(opens(0) + opens(1));
    QVR_deviceHandle(0);
    QVR_deviceHandle(1);
  }

  // The line is looked for: it is up, and this is what it processes.
  static Script readsFraming(int device, uint32_t firstTone = kFirstTone, uint32_t tones = kTones) {
    return reads(device, 0xE2400000, framing(firstTone, tones));
  }
  static Script findsTones(int device) { return findsLineUp(device) + readsFraming(device); }

  // The chip sends or receives on subcarriers 100 and 101.
  static Script readsSet(int device, bool sent) {
    return reads(device, sent ? kSentSet : kReceivedSet, medleySet({{kFirstTone, kFirstTone + kTones - 1}}));
  }

  // 5 bits where the chip sends, 9 where it receives, and a pilot.
  static Script readsLoading(int device, bool sent) {
    return reads(device, sent ? 0xE5000000 : 0xE5001000, loading(sent));
  }
  static Bytes loading(bool sent) { return littleEndian16({100 << 4 | (sent ? 5 : 9), 101 << 4 | 15}); }

  // SNRs of 70.2 dB and 10.3 dB.
  static Script readsEnergies(int device) {
    return reads(device, 0xE4180000 + 4 * kFirstTone, window({100, 97859000})) +
           readsScaling(device, 1000, 20);
  }

  // The same two SNRs, as the far end reports them.
  static Script asksFarEndSnr(int device) {
    Bytes values(kFirstTone + kTones, 0xFF);
    values[100] = 203;  // 69.5 dB
    values[101] = 84;   // 10 dB
    return ::asksFarEndSnr(device, values);
  }
  static Script asksFarEndSnr(int device, const Bytes& answer) {
    return asksSnrBlock(device, 0, kFirstTone + kTones - 1, answer);
  }

  // Receive levels of -57.5 dBm/Hz and -45.5 dBm/Hz behind a gain of 10 dB, without the canceller.
  static Script readsReceived(int device, bool far = false) {
    return memory(device, far, 0xE4080000, littleEndian16({0, 4096, 4096, 0})) +
           memory(device, far, 0xE4100000, {2, 0}) + readsFrontEnd(device, far);
  }
  static Script readsFrontEnd(int device, bool far = false) {
    return memory(device, far, 0xE4280000, words({0xFFFFFF4A})) +
           memory(device, far, 0xE4300000, words({0xFFFFFFFE}));
  }

  // Both are sent at -60 dBm/Hz before the line driver.
  static Script readsSent(int device, bool far = false) {
    return memory(device, far, 0xE4200000, littleEndian16({-6000, -6000}));
  }
  static Script readsSentAmplitudes(int device, bool far) {
    return memory(device, far, 0xE4240000, littleEndian16({16384, 16384}));
  }

  // Chip memory at either end of the line.
  static Script memory(int device, bool far, uint32_t address, const Bytes& bytes) {
    return far ? readsFarEnd(device, 0, address, bytes) : reads(device, address, bytes);
  }

  // Exchanges over far-end memory are numbered one after the other.
  void expect(const Script& script) {
    Script numbered;
    for (ExpectedCall call : script.calls()) {
      if (isFarEndMemory(call)) {
        store_le16(&call.in[4], ++exchanges_);
        store_le16(&call.out[4], exchanges_);
      }
      numbered = numbered + Script(call);
    }
    TypedConsole::expect(numbered);
  }

  WrittenFile file_;

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
