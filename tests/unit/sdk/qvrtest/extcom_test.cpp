// The programs that check the links between chips, and their results.
#include "qvrtest/extcom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "qvrtest/device_programs.h"
#include "std/byte_order.h"
#include "support/assertions.h"
#include "support/devices.h"

using namespace gfast;

namespace {

constexpr uint32_t kControlA = 0xA00B0140;
constexpr uint32_t kDataA = 0xA00B0144;
constexpr uint32_t kControlB = 0xA80B0140;
constexpr uint32_t kDataB = 0xA80B0144;

bool operator==(const QVR_instruction_t& a, const QVR_instruction_t& b) {
  return a.memop == b.memop && a.deviceId == b.deviceId && a.addr == b.addr && a.value == b.value;
}

// ---- The programs ----

// An access of the start program, as its three writes.
void expectAccess(size_t access, QVR_deviceId_t device, uint32_t control, uint32_t command, uint32_t value) {
  const auto* steps = &startPRBSTestProgram[3 * access];
  EXPECT_TRUE(steps[0] == (QVR_instruction_t{QVR_MEMOP_WRITEMEM, device, control, command})) << access;
  EXPECT_TRUE(steps[1] == (QVR_instruction_t{QVR_MEMOP_WRITEMEM, device, control + 4, value})) << access;
  EXPECT_TRUE(steps[2] == (QVR_instruction_t{QVR_MEMOP_WRITEMEM, device, control, 3})) << access;
}

TEST(StartPrbsProgram, Has161Accesses) {
  EXPECT_EQ(startPRBSTestProgram.size(), 483U);
  EXPECT_EQ(startPRBSTestProgram.size() / 3, 161U);
}

TEST(StartPrbsProgram, ConfiguresRegister15OfEveryUnitWith0And4) {
  expectAccess(0, 0, kControlA, 0x10150000, 0);
  expectAccess(1, 0, kControlA, 0x10150000, 4);
  expectAccess(6, 0, kControlA, 0x13150000, 0);
  expectAccess(8, 0, kControlB, 0x10150000, 0);
  expectAccess(13, 0, kControlB, 0x12150000, 4);
  expectAccess(14, 1, kControlA, 0x10150000, 0);
  expectAccess(55, 3, kControlB, 0x12150000, 4);
}

TEST(StartPrbsProgram, ConfiguresRegister16OfEveryUnitWith0And4And14) {
  expectAccess(56, 0, kControlA, 0x10160000, 0);
  expectAccess(57, 0, kControlA, 0x10160000, 4);
  expectAccess(58, 0, kControlA, 0x10160000, 0x14);
  expectAccess(59, 0, kControlA, 0x11160000, 0);
  expectAccess(76, 0, kControlB, 0x12160000, 0x14);
  expectAccess(77, 1, kControlA, 0x10160000, 0);
  expectAccess(139, 3, kControlB, 0x12160000, 0x14);
}

TEST(StartPrbsProgram, ConfiguresRegister16OfDevice3Twice) {
  for (size_t access = 119; access < 140; access++) {
    for (size_t step = 3 * access; step < 3 * access + 3; step++) {
      EXPECT_EQ(startPRBSTestProgram[step].deviceId, 3);
      EXPECT_TRUE(startPRBSTestProgram[step] == startPRBSTestProgram[step + 63]) << step;
    }
  }
  expectAccess(160, 3, kControlB, 0x12160000, 0x14);
}

// Every access, from the lists that make the program.
TEST(StartPrbsProgram, HasEveryAccessInItsPlace) {
  size_t access = 0;
  const auto pass = [&](QVR_deviceId_t device, uint32_t number, const std::vector<uint32_t>& values) {
    for (uint32_t unit = 0; unit < 7; unit++) {
      const bool isBlockA = unit < 4;
      const uint32_t code = 0x10 + (isBlockA ? unit : unit - 4);
      for (const uint32_t value : values) {
        expectAccess(access++, device, isBlockA ? kControlA : kControlB, (code << 24) | (number << 16),
                     value);
      }
    }
  };
  for (const QVR_deviceId_t device : {0, 1, 2, 3}) {
    pass(device, 0x15, {0, 4});
  }
  for (const QVR_deviceId_t device : {0, 1, 2, 3, 3}) {
    pass(device, 0x16, {0, 4, 0x14});
  }
  EXPECT_EQ(access, 161U);
}

const std::vector<std::vector<uint32_t>> kSlots = {{0, 1, 2, 3, 4, 5, 6},
                                                   {12, 13, 14, 15, 16, 17, 18},
                                                   {13, 12, 15, 14, 17, 16, 19},
                                                   {36, 37, 38, 39, 40, 41, 42}};

TEST(PrbsResultsProgram, ReadsRegister17OfEveryUnitIntoItsSlot) {
  ASSERT_EQ(getPRBSTestResultsProgram.size(), 84U);
  const auto* step = getPRBSTestResultsProgram.data();
  for (QVR_deviceId_t device = 0; device < 4; device++) {
    for (uint32_t unit = 0; unit < 7; unit++) {
      const bool isBlockA = unit < 4;
      const uint32_t control = isBlockA ? kControlA : kControlB;
      const uint32_t command = (0x10 + (isBlockA ? unit : unit - 4)) << 24 | 0x170000;
      const uint32_t slot = kSlots[static_cast<size_t>(device)][unit];
      EXPECT_TRUE(*step++ == (QVR_instruction_t{QVR_MEMOP_WRITEMEM, device, control, command}));
      EXPECT_TRUE(*step++ == (QVR_instruction_t{QVR_MEMOP_WRITEMEM, device, control, 1}));
      EXPECT_TRUE(*step++ ==
                  (QVR_instruction_t{QVR_MEMOP_READMEM, device, isBlockA ? kDataA : kDataB, slot}));
    }
  }
}

// ---- Against four devices ----

// A cluster of chips whose lane units answer a read of register 0x17 with a number of their own.
class Cluster {
 public:
  static Cluster& the() {
    static Cluster cluster;
    return cluster;
  }

  static int32_t errorsOf(int device, bool isBlockB, int unit) {
    return 1000 * device + (isBlockB ? 100 : 0) + unit;
  }

  size_t accesses = 0;
  size_t failingAccess = SIZE_MAX;

  QVR_retval_t write(QVR_deviceId_t device, uint32_t address, const void* from, uint32_t size) {
    EXPECT_EQ(size, 4U);
    if (accesses++ == failingAccess) {
      return QVR_E_MEMWRITE_ERROR;
    }
    const uint32_t value = load_be32(from);
    uint32_t& data = words_[{device, address + 4}];
    if (value == 1) {
      const uint32_t command = words_[{device, address}];
      EXPECT_EQ(command & 0x00FF0000, 0x00170000U);
      data = static_cast<uint32_t>(errorsOf(device, address == kControlB, static_cast<int>(command >> 24)));
    }
    words_[{device, address}] = value;
    return QVR_E_STATUS_OK;
  }

  QVR_retval_t read(QVR_deviceId_t device, uint32_t address, void* to, uint32_t size) {
    EXPECT_EQ(size, 4U);
    if (accesses++ == failingAccess) {
      return QVR_E_MEMREAD_ERROR;
    }
    store_be32(to, words_[{device, address}]);
    return QVR_E_STATUS_OK;
  }

 private:
  std::map<std::pair<QVR_deviceId_t, uint32_t>, uint32_t> words_;
};

constexpr ProgramMemory kCluster{
    [](QVR_deviceId_t device, uint32_t address, void* to, uint32_t size) {
      return Cluster::the().read(device, address, to, size);
    },
    [](QVR_deviceId_t device, uint32_t address, const void* from, uint32_t size) {
      return Cluster::the().write(device, address, from, size);
    }};

// The counter of unit k of a device.
int32_t errorsOf(int device, int k) {
  return Cluster::errorsOf(device, k >= 4, 0x10 + (k < 4 ? k : k - 4));
}

TEST(ExtcomErrors, FillEverySlot) {
  ProgramSlots slots{};
  QVR_extcomPortErrors_t results{};
  ASSERT_EQ(collectExtcomErrors(slots, kCluster, results), QVR_E_STATUS_OK);
  std::vector<int32_t> expected(48, -1);
  for (const int device : {0, 1, 2, 3}) {
    for (int k = 0; k < 7; k++) {
      expected[kSlots[static_cast<size_t>(device)][static_cast<size_t>(k)]] = errorsOf(device, k);
    }
  }
  EXPECT_EQ(std::vector<int32_t>(slots.begin(), slots.end()), expected);
  EXPECT_EQ(expected[42], errorsOf(3, 6));
}

TEST(ExtcomErrors, AreReturnedForTheDevicesOfThisSystem) {
  ProgramSlots slots{};
  QVR_extcomPortErrors_t results{};
  collectExtcomErrors(slots, kCluster, results);
  const auto& devices = results.extcomPortErrorsOnDevice;
  for (int k = 0; k < 7; k++) {
    EXPECT_EQ(devices[0][k / 2][k % 2], errorsOf(0, k));
  }
  EXPECT_EQ(devices[0][3][1], -1);
  EXPECT_EQ(devices[0][4][0], -1);
  EXPECT_EQ(devices[0][5][1], -1);
  EXPECT_EQ(devices[1][0][0], errorsOf(2, 1));  // lanes exchanged
  EXPECT_EQ(devices[1][0][1], errorsOf(2, 0));
  EXPECT_EQ(devices[1][3][0], errorsOf(1, 6));
  EXPECT_EQ(devices[1][3][1], errorsOf(2, 6));
  EXPECT_EQ(devices[1][5][1], -1);
}

TEST(ExtcomErrors, AreTheSameWhenCollectedAgain) {
  ProgramSlots slots{};
  slots.fill(77);
  QVR_extcomPortErrors_t first{};
  QVR_extcomPortErrors_t second{};
  collectExtcomErrors(slots, kCluster, first);
  collectExtcomErrors(slots, kCluster, second);
  EXPECT_EQ(std::memcmp(&first, &second, sizeof first), 0);
}

TEST(ExtcomErrors, AreUnchangedWhenAnyStepFails) {
  for (size_t step = 0; step < getPRBSTestResultsProgram.size(); step++) {
    Cluster::the().accesses = 0;
    Cluster::the().failingAccess = step;
    ProgramSlots slots{};
    QVR_extcomPortErrors_t results{};
    results.extcomPortErrorsOnDevice[1][5][1] = 7;
    EXPECT_EQ(collectExtcomErrors(slots, kCluster, results),
              step % 3 == 2 ? QVR_E_MEMREAD_ERROR : QVR_E_MEMWRITE_ERROR);
    EXPECT_EQ(Cluster::the().accesses, step + 1);
    EXPECT_EQ(results.extcomPortErrorsOnDevice[0][0][0], 0);
    EXPECT_EQ(results.extcomPortErrorsOnDevice[1][5][1], 7);
  }
}

TEST(ExtcomStart, AccessesEveryDeviceOfACluster) {
  ProgramSlots slots{};
  EXPECT_EQ(playProgram(startPRBSTestProgram, slots, kCluster), QVR_E_STATUS_OK);
  EXPECT_EQ(Cluster::the().accesses, 483U);
}

// ---- Through the device layer ----

Bytes bigEndian(uint32_t value) {
  Bytes bytes(4);
  store_be32(bytes.data(), value);
  return bytes;
}

// The requests that a program makes for the devices of this system; what is read is a counter of 5.
template <size_t Steps>
Script requestsOf(const std::array<QVR_instruction_t, Steps>& program) {
  Script script;
  for (const QVR_instruction_t& step : program) {
    if (step.deviceId < QVR_K_MAX_DEVICES) {
      script = script + (step.memop == QVR_MEMOP_READMEM
                             ? reads(step.deviceId, step.addr, {0, 0, 0, 5})
                             : writes(step.deviceId, step.addr, bigEndian(step.value)));
    } else {
      break;
    }
  }
  return script;
}

class ExtcomOnTwoDevices : public testing::Test {
 protected:
  void SetUp() override {
    openDevice(driver_, 0);
    openDevice(driver_, 1);
  }

  ExpectedRequests driver_{Script()};
};

TEST_F(ExtcomOnTwoDevices, StartAssertsAtTheThirdDevice) {
  EXPECT_ASSERTION(
      {
        driver_.expect(requestsOf(startPRBSTestProgram));
        QVR_startExtcomConnectivityTest();
      },
      asserts(100, "Unknown device handle", 2));
}

TEST_F(ExtcomOnTwoDevices, CollectingAssertsAtTheThirdDevice) {
  EXPECT_ASSERTION(
      {
        QVR_extcomPortErrors_t results;
        driver_.expect(requestsOf(getPRBSTestResultsProgram));
        QVR_getExtcomConnectivityTestResults(&results);
      },
      asserts(100, "Unknown device handle", 2));
}

TEST_F(ExtcomOnTwoDevices, FailedStepStopsBothBeforeTheThirdDevice) {
  driver_.expect(requestsOf(startPRBSTestProgram).failingAt(0, EIO));
  EXPECT_EQ(QVR_startExtcomConnectivityTest(), QVR_E_MEMWRITE_ERROR);
  driver_.verify();
  driver_.expect(requestsOf(getPRBSTestResultsProgram).failingAt(2, EIO));
  QVR_extcomPortErrors_t results{};
  results.extcomPortErrorsOnDevice[0][0][0] = 7;
  EXPECT_EQ(QVR_getExtcomConnectivityTestResults(&results), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(results.extcomPortErrorsOnDevice[0][0][0], 7);
  EXPECT_EQ(results.extcomPortErrorsOnDevice[1][0][0], 0);
}

}  // namespace
