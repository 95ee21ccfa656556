// What the tests of the subcarrier tables share: lines in showtime on both sides, and operations of which
// each request fails in turn.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "support/assertions.h"
#include "support/devices.h"
#include "support/far_end_memory.h"
#include "support/lines.h"
#include "support/tones.h"

using namespace gfast;

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
    Script script = readsAt(far, device, 0xE4080000, mantissas);
    script = script + readsAt(far, device, 0xE4100000, exponents);
    script = script + readsAt(far, device, 0xE4280000, words({gain}));
    return script + readsAt(far, device, 0xE4300000, words({mode}));
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

  // Each request of the operation fails in turn. `run` returns the operation's code, and tells in `untouched`
  // whether the operation left its outputs alone.
  void expectEachFailureAnswered(const std::function<Script()>& build,
                                 const std::function<QVR_retval_t(bool& untouched)>& run) {
    const size_t requests = buildAgain(build).size();
    ASSERT_GT(requests, 3U);
    for (size_t position = 0; position < requests; position++) {
      SCOPED_TRACE(position);
      const uint16_t before = sequence_;
      Script script = build().failingAt(position, EIO);
      const ExpectedCall& failing = script.calls().back();
      // A block of the far end's SNR is asked for ten times.
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
    return static_cast<uint16_t>(std::count_if(script.calls().begin(), script.calls().end(), isFarEndMemory));
  }
};
