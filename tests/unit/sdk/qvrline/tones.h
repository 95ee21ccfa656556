// What the tests of the subcarrier tables share: lines in showtime on both sides, what their chips keep by
// subcarrier, and operations of which each request fails in turn.
#pragma once

#include <cmath>
#include <functional>
#include <limits>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "unit/sdk/lines.h"

using namespace gfast;

// enterBothLines puts the chip at the network side on line 0, the one at the subscriber side on line 1.
constexpr QVR_lineId_t kNetworkSide = 0;
constexpr QVR_lineId_t kSubscriberSide = 1;

constexpr uint32_t kReceivedSet = 0xE6000000;  // type 0
constexpr uint32_t kSentSet = 0xE6080000;      // type 1

struct Band {
  uint16_t first;
  uint16_t last;
  bool operator==(const Band& other) const = default;
};

inline void append16(Bytes& bytes, uint32_t value) {
  bytes.push_back(static_cast<uint8_t>(value));
  bytes.push_back(static_cast<uint8_t>(value >> 8));
}

inline void append32(Bytes& bytes, uint32_t value) {
  append16(bytes, value);
  append16(bytes, value >> 16);
}

inline Bytes littleEndian16(const std::vector<int>& values) {
  Bytes bytes;
  for (const int value : values) {
    append16(bytes, static_cast<uint32_t>(value));
  }
  return bytes;
}

// The record of a medley set, which may claim another number of bands than it has.
inline Bytes medleySet(const std::vector<Band>& bands, uint16_t claimed) {
  Bytes bytes;
  for (const Band& band : bands) {
    append16(bytes, band.first);
    append16(bytes, band.last);
  }
  bytes.resize(128);
  append16(bytes, claimed);
  append16(bytes, 0);
  return bytes;
}

inline Bytes medleySet(const std::vector<Band>& bands) {
  return medleySet(bands, static_cast<uint16_t>(bands.size()));
}

// How a line is framed, of which the processed subcarriers matter here.
inline Bytes framing(uint32_t firstTone, uint32_t tones) {
  Bytes block(72);
  store_le32(&block[8], firstTone);
  store_le32(&block[12], tones);
  return block;
}

inline Script findsLineUp(int device) {
  return readsIdentity(device, chipWithLine(LS_SHOWTIME));
}

inline Script findsTones(int device, uint32_t firstTone, uint32_t tones) {
  return findsLineUp(device) + reads(device, 0xE2400000, framing(firstTone, tones));
}

// Calls `each` with the pieces of the bytes that a carrier of so many takes, and where each begins.
inline Script inPieces(const Bytes& bytes, size_t most,
                       const std::function<Script(uint32_t offset, const Bytes& piece)>& each) {
  Script script;
  for (size_t done = 0; done < bytes.size(); done += most) {
    const Bytes piece(bytes.data() + done, bytes.data() + std::min(done + most, bytes.size()));
    script = script + each(static_cast<uint32_t>(done), piece);
  }
  return script;
}

// A read as the driver takes it.
inline Script readsInPieces(int device, uint32_t address, const Bytes& bytes) {
  return inPieces(bytes, 900, [&](uint32_t offset, const Bytes& piece) {
    return reads(device, address + offset, piece);
  });
}

// Noise energies as they are seen through the window.
inline Bytes window(const std::vector<uint32_t>& energies, uint32_t firstGuard = 7,
                    uint32_t secondGuard = 7) {
  Bytes bytes;
  append32(bytes, firstGuard);
  append32(bytes, secondGuard);
  for (const uint32_t energy : energies) {
    append32(bytes, energy);
  }
  return bytes;
}

inline Script readsScaling(int device, uint32_t windowSize, uint32_t scale) {
  Bytes block(52);
  store_le32(&block[8], windowSize);
  store_le32(&block[12], scale);
  return reads(device, 0xE2000000, block);
}

inline Script asksSnrBlock(int device, uint16_t first, uint16_t last, const Bytes& answer) {
  Bytes request{4};
  append16(request, first);
  append16(request, last);
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, request, 2U + last - first + 1,
                       answer);
}

// The far end's SNR from subcarrier 0 on; the measurement time says nothing.
inline Script asksFarEndSnr(int device, const Bytes& values) {
  return inPieces(values, 248, [&](uint32_t first, const Bytes& piece) {
    Bytes answer(2 + piece.size(), 0x5A);
    std::copy(piece.begin(), piece.end(), answer.begin() + 2);
    return asksSnrBlock(device, static_cast<uint16_t>(first), static_cast<uint16_t>(first + piece.size() - 1),
                        answer);
  });
}

class ToneTest : public testing::Test {
 protected:
  void SetUp() override {
    enterBothLines();
    startDevice(driver_, 0, LS_SHOWTIME);
    startDevice(driver_, 1, LS_SHOWTIME);
  }

  // Far-end memory in the exchanges it takes, numbered on.
  Script readsFarEndPieces(int device, uint32_t address, const Bytes& bytes) {
    return inPieces(bytes, 512, [&](uint32_t offset, const Bytes& piece) {
      return readsFarEnd(device, ++sequence_, address + offset, piece);
    });
  }

  // Memory of either end.
  Script readsAt(bool far, int device, uint32_t address, const Bytes& bytes) {
    return far ? readsFarEndPieces(device, address, bytes) : readsInPieces(device, address, bytes);
  }

  // What the receiver keeps: coefficients, exponents, gain, mode.
  Script readsEqualiser(bool far, int device, const Bytes& mantissas, const Bytes& exponents, uint32_t gain,
                        uint32_t mode) {
    Bytes gainWord;
    append32(gainWord, gain);
    Bytes modeWord;
    append32(modeWord, mode);
    Script script = readsAt(far, device, 0xE4080000, mantissas);
    script = script + readsAt(far, device, 0xE4100000, exponents);
    script = script + readsAt(far, device, 0xE4280000, gainWord);
    return script + readsAt(far, device, 0xE4300000, modeWord);
  }

  // The operation's code when this request of it fails for good.
  static QVR_retval_t codeOf(const ExpectedCall& call) {
    if (call.code == DFEIOCFARENDMSG) {
      return QVR_E_FAILED_SENDING_FAR_END_MSG;
    }
    const uint32_t address = call.request.req_u.memread.hw_mem_addr;
    const bool ofIdentity =
        address == SBR_REG_ADDRESS || address == VIRT_ADDR_DEVICE_INFO_READ || address == VIRT_ADDR_B0_REGS;
    const bool ofWindow = address >= 0xE4180000 && address < 0xE4200000;
    const bool ofLoading = address >= 0xE5000000 && address < 0xE5002000;
    if (ofIdentity || ofWindow) {
      return QVR_E_ERROR;
    }
    return ofLoading ? QVR_E_STATUS_OK : QVR_E_MEMREAD_ERROR;
  }

  // Each request of the operation fails in turn. `run` answers whether its outputs were left alone.
  void expectEachFailureAnswered(const std::function<Script()>& build,
                                 const std::function<QVR_retval_t(bool& untouched)>& run) {
    const size_t requests = buildAgain(build).size();
    ASSERT_GT(requests, 3U);
    for (size_t position = 0; position < requests; position++) {
      SCOPED_TRACE(position);
      const uint16_t before = sequence_;
      Script script = build().failingAt(position, EIO);
      const ExpectedCall& failing = script.calls().back();
      const bool insisted = failing.request.req_u.farendmsg.farend_msg_req_type ==
                                MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ &&
                            failing.code == DFEIOCFARENDMSG;
      const QVR_retval_t expected = codeOf(failing);
      sequence_ = static_cast<uint16_t>(before + farEndReads(script));
      driver_.expect(insisted ? script + Script(failing).times(9) : script);
      bool untouched = false;
      EXPECT_EQ(run(untouched), expected);
      EXPECT_TRUE(untouched);
      driver_.verify();
    }
  }

  ExpectedRequests driver_{Script()};
  uint16_t sequence_ = 0;  // of the last exchange over far-end memory

 private:
  Script buildAgain(const std::function<Script()>& build) {
    const uint16_t before = sequence_;
    const Script script = build();
    sequence_ = before;
    return script;
  }

  static uint16_t farEndReads(const Script& script) {
    return static_cast<uint16_t>(
        std::count_if(script.calls().begin(), script.calls().end(), [](const ExpectedCall& call) {
          return call.code == DFEIOCFARENDMSG &&
                 call.request.req_u.farendmsg.farend_msg_req_type == MGMT_FAR_END_REQ_TYPE_READMEM;
        }));
  }
};
