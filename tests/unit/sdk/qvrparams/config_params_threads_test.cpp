// Parameters that two threads read and write at the same time.
#include <gtest/gtest.h>
#include <qvr.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "chip/parameter_records.h"
#include "driver/driver.h"
#include "qvrline/line_table.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kDictionary[] = {0xEB000000, 8, 8, 0x00001000, 0x00201001};  // ids 0 and 1, 4 bytes each
constexpr uint32_t kBothAlike[] = {0x11111111, 0x22222222};

// Returns the dictionary, and parameters whose four bytes are equal.
class Chips final : public Driver {
 public:
  int open(int device) override { return device; }
  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code != DFEIOCMEMRD) {
      return 0;
    }
    gfast_memread& read = request.req_u.memread;
    if (read.hw_mem_addr >> 24 != VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY >> 24) {
      std::memset(read.buf, static_cast<int>(++counter_ & 0xFF), read.bufsize);
      return 0;
    }
    const uint32_t first = (read.hw_mem_addr - VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY) / 4;
    for (uint32_t i = 0; i < read.bufsize / 4; i++) {
      store_le32(read.buf + size_t{i} * 4, kDictionary[first + i]);
    }
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

 private:
  std::atomic<uint32_t> counter_{0};
};

bool bytesAreAlike(uint32_t value) {
  return value == (value & 0xFF) * 0x01010101U;
}

void useParameters() {
  QVR_lineConfig_t config{};
  for (int i = 0; i < 300; i++) {
    for (const eConstParams id : {PARAMS_ParamsRevision, PARAMS_ClassifierUnicastMask}) {
      uint32_t value = 0;
      EXPECT_EQ(QVR_getConfigParam(0, id, &value), QVR_E_STATUS_OK);
      EXPECT_TRUE(bytesAreAlike(value)) << value;
      EXPECT_EQ(QVR_setConfigParam(0, id, &kBothAlike[i % 2]), QVR_E_STATUS_OK);
      EXPECT_NE(QVR_getParamDictionaryEntry(id), nullptr);
    }
    EXPECT_EQ(QVR_getLineConfig(0, &config), QVR_E_STATUS_OK);
    EXPECT_EQ(QVR_saveConfigParams(0), QVR_E_STATUS_OK);
  }
}

TEST(ParameterThreads, SeeWholeValuesAndOneDictionary) {
  static Chips chips;
  installDriver(chips);
  addLine(0, 0, 0, TRUE);
  std::atomic<const QVR_paramInfo_t*> theirs{nullptr};
  std::thread notifications([&] {
    theirs = QVR_getParamDictionaryEntry(PARAMS_ParamsRevision);
    useParameters();
  });
  const QVR_paramInfo_t* ours = QVR_getParamDictionaryEntry(PARAMS_ParamsRevision);
  useParameters();
  notifications.join();
  EXPECT_EQ(theirs, ours);
  EXPECT_NE(ours, nullptr);
}

}  // namespace
