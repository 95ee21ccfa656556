// Far-end memory over the eoc: the pieces, and good and bad answers of the far end.
#include <cstring>

#include "chip/far_end_messages.h"
#include "qvrdev/device_table.h"
#include "support/assertions.h"
#include "support/devices.h"
#include "support/far_end_memory.h"
#include "support/lines.h"

using namespace gfast;

namespace {

constexpr uint32_t kFarEndAddress = 0xE2440000;

class FarEndMemory : public testing::Test {
 protected:
  void SetUp() override {
    enterBothLines();
    startDevice(driver_, 0, LS_SHOWTIME);
  }

  // Reads so many bytes of line 0 into a buffer of 0xAA.
  QVR_retval_t read(uint32_t length, uint32_t address = kFarEndAddress) {
    bytes_.assign(length, 0xAA);
    return QVR_readmemFarEnd(0, address, bytes_.data(), length);
  }

  // Reads so many bytes in the first exchange of the process, which gets this answer.
  QVR_retval_t readAnswered(uint32_t length, const Bytes& answer) {
    driver_.expect(asksFarEndMemory(0, 1, kFarEndAddress, length, answer));
    return read(length);
  }

  ExpectedRequests driver_{Script()};
  Bytes bytes_;
};

TEST_F(FarEndMemory, RequestIsAHeaderAndAnswerIsAHeaderWithData) {
  const Bytes request{2, 0, 4, 0, 1, 0, 0, 0, 0x78, 0x56, 0x34, 0xE2};
  const Bytes answer{2, 0x80, 4, 0, 1, 0, 0, 0, 0x78, 0x56, 0x34, 0xE2, 0xDE, 0xAD, 0xBE, 0xEF};
  driver_.expect(sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_READMEM, request, 16, answer));
  EXPECT_EQ(read(4, 0xE2345678), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_, (Bytes{0xDE, 0xAD, 0xBE, 0xEF}));
}

TEST_F(FarEndMemory, IsReadOverTheGivenLine) {
  addLine(1, 1, 0, FALSE);
  startDevice(driver_, 1, LS_SHOWTIME);
  driver_.expect(readsFarEnd(1, 1, kFarEndAddress, {1, 2, 3}));
  bytes_.resize(3);
  EXPECT_EQ(QVR_readmemFarEnd(1, kFarEndAddress, bytes_.data(), 3), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes_, (Bytes{1, 2, 3}));
}

// The device has one line, with the index 0.
TEST_F(FarEndMemory, IsNotReadOverALineThatItsDeviceDoesNotHave) {
  addLine(0, 0, 1, TRUE);
  EXPECT_EQ(read(4), QVR_E_LINE_NOT_ACTIVE);
}

TEST_F(FarEndMemory, IsReadInNumberedPiecesOf512Bytes) {
  const Bytes first = countingWords(512, 0x11223344);
  const Bytes second = countingWords(512, 0x55667788);
  driver_.expect(readsFarEnd(0, 1, kFarEndAddress, first) + readsFarEnd(0, 2, kFarEndAddress + 512, second) +
                 readsFarEnd(0, 3, kFarEndAddress + 1024, {7}));
  EXPECT_EQ(read(1025), QVR_E_STATUS_OK);
  EXPECT_EQ(Bytes(bytes_.begin(), bytes_.begin() + 512), first);
  EXPECT_EQ(Bytes(bytes_.begin() + 512, bytes_.end() - 1), second);
  EXPECT_EQ(bytes_.back(), 7);
}

TEST_F(FarEndMemory, OnePieceIsOneExchange) {
  driver_.expect(readsFarEnd(0, 1, kFarEndAddress, Bytes(512, 3)));
  EXPECT_EQ(read(512), QVR_E_STATUS_OK);
  driver_.expect(readsFarEnd(0, 2, kFarEndAddress, Bytes(512, 4)) +
                 readsFarEnd(0, 3, kFarEndAddress + 512, {5}));
  EXPECT_EQ(read(513), QVR_E_STATUS_OK);
}

TEST_F(FarEndMemory, LengthZeroMakesNoExchange) {
  EXPECT_EQ(read(0), QVR_E_STATUS_OK);
}

TEST_F(FarEndMemory, AddressWrapsAroundAtTheEndOfTheAddressSpace) {
  driver_.expect(readsFarEnd(0, 1, 0xFFFFFF00, Bytes(512, 1)) + readsFarEnd(0, 2, 0x00000100, {2}));
  EXPECT_EQ(read(513, 0xFFFFFF00), QVR_E_STATUS_OK);
}

TEST_F(FarEndMemory, LargestLengthIsReadWhole) {
  Script script;
  for (uint32_t piece = 0; piece < 128; piece++) {
    script = script + readsFarEnd(0, static_cast<uint16_t>(piece + 1), kFarEndAddress + piece * 512,
                                  Bytes(512, static_cast<uint8_t>(piece)));
  }
  driver_.expect(script);
  EXPECT_EQ(read(65536), QVR_E_STATUS_OK);
  for (size_t i = 0; i < bytes_.size(); i++) {
    ASSERT_EQ(bytes_[i], i / 512) << i;
  }
}

TEST_F(FarEndMemory, AssertsOnALengthBeyondTheLargest) {
  uint8_t byte = 0;
  const auto report = testing::AllOf(
      testing::ContainsRegex("Assert 200 in file ../qvrline at line [0-9]+\nResponse message too large\n"),
      testing::Not(testing::HasSubstr("Param")));
  EXPECT_ASSERTION(QVR_readmemFarEnd(0, kFarEndAddress, &byte, 65537), report);
  EXPECT_ASSERTION(QVR_readmemFarEnd(0, kFarEndAddress, &byte, 0xFFFFFFFF), report);
}

TEST_F(FarEndMemory, AssertsOnAnUnknownLine) {
  uint8_t byte = 0;
  for (const QVR_lineId_t line : {2, -1}) {
    const auto report = asserts(200, "Invalid Line Identifier", line, "../qvrline");
    EXPECT_ASSERTION(QVR_readmemFarEnd(line, kFarEndAddress, &byte, 1), report);
    EXPECT_ASSERTION(QVR_readmemFarEnd(line, kFarEndAddress, &byte, 0), report);
  }
}

TEST_F(FarEndMemory, ReturnsNackForARefusalWhateverItsOtherFieldsSay) {
  EXPECT_EQ(readAnswered(4, farEndHeader(0xFFFF, 4, 1, kFarEndAddress)), QVR_E_FAREND_EOC_NACK);
  driver_.expect(asksFarEndMemory(0, 2, kFarEndAddress, 4, farEndHeader(0xFFFF, 0, 0, 0)));
  EXPECT_EQ(read(4), QVR_E_FAREND_EOC_NACK);
  Bytes withData = farEndHeader(0xFFFF, 4, 3, kFarEndAddress);
  withData.resize(16);
  driver_.expect(asksFarEndMemory(0, 3, kFarEndAddress, 4, withData));
  EXPECT_EQ(read(4), QVR_E_FAREND_EOC_NACK);
  EXPECT_EQ(bytes_, Bytes(4, 0xAA));
}

TEST_F(FarEndMemory, RejectsAnAnswerToAnotherRequest) {
  const Bytes data{1, 2, 3, 4};
  const auto answer = [&](uint16_t opcode, size_t length, uint16_t sequence, uint32_t address) {
    Bytes bytes = farEndHeader(opcode, length, sequence, address);
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
  };
  const std::vector<Bytes> strays{
      answer(0x0002, 4, 1, kFarEndAddress),      // the request itself
      answer(0x8003, 4, 2, kFarEndAddress),      // the answer to a write
      answer(0x0280, 4, 3, kFarEndAddress),      // its opcode's bytes exchanged
      answer(0x0000, 4, 4, kFarEndAddress),      // nothing
      answer(0x8002, 4, 4, kFarEndAddress),      // the exchange before
      answer(0x8002, 4, 7, kFarEndAddress),      // the exchange to come
      answer(0x8002, 4, 7, kFarEndAddress + 4),  // another place
      answer(0x8002, 4, 8, swapl(kFarEndAddress)),
      answer(0x8002, 3, 9, kFarEndAddress),  // the length says one byte less
      answer(0x8002, 5, 10, kFarEndAddress),
      answer(0x8002, 0xFFFF, 11, kFarEndAddress),
  };
  for (size_t i = 0; i < strays.size(); i++) {
    driver_.expect(asksFarEndMemory(0, static_cast<uint16_t>(i + 1), kFarEndAddress, 4, strays[i]));
    EXPECT_EQ(read(4), QVR_E_FAILED_GETTING_FE_DATA) << i;
    EXPECT_EQ(bytes_, Bytes(4, 0xAA)) << i;
  }
}

TEST_F(FarEndMemory, RejectsAnAnswerThatIsTooShort) {
  uint16_t sequence = 0;
  for (size_t length = 0; length < 16; length++) {
    Bytes answer = readAnswer(++sequence, kFarEndAddress, {1, 2, 3, 4});
    answer.resize(length);
    driver_.expect(asksFarEndMemory(0, sequence, kFarEndAddress, 4, answer));
    EXPECT_EQ(read(4), QVR_E_FAILED_GETTING_FE_DATA) << length;
    EXPECT_EQ(bytes_, Bytes(4, 0xAA)) << length;
  }
}

// Answers correctly, but reports this copied length.
class Claims final : public Driver {
 public:
  explicit Claims(uint32_t claimed) : claimed_(claimed) {
    installDriver(*this);
    enterBothLines();
    QVR_getDeviceInfo(0, nullptr);
    setLineState(0, 0, LS_SHOWTIME);
  }

  int open(int device) override { return device; }
  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD) {
      std::memset(request.req_u.memread.buf, 0, request.req_u.memread.bufsize);
      return 0;
    }
    lastNumber = load_le16(request.req_u.farendmsg.buf + MGMT_HEADER_SN);
    request.req_u.farendmsg.buf[1] = '\x80';
    request.req_u.farendmsg.datalen_copied_to_user = claimed_;
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  uint16_t lastNumber = 0;

 private:
  uint32_t claimed_;
};

QVR_retval_t readThroughADriverThatClaims(uint32_t claimed) {
  const Claims driver(claimed);
  uint8_t bytes[4];
  return QVR_readmemFarEnd(0, kFarEndAddress, bytes, sizeof bytes);
}

TEST(FarEndMemoryThroughADriver, RejectsCopiedLengthBeyondBuffer) {
  EXPECT_EQ(readThroughADriverThatClaims(16), QVR_E_STATUS_OK);
  for (const uint32_t claimed : {17U, 524U, 525U, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(readThroughADriverThatClaims(claimed), QVR_E_FAILED_GETTING_FE_DATA) << claimed;
  }
}

TEST(FarEndMemoryThroughADriver, SequenceNumbersWrapAround) {
  const Claims driver(MGMT_HEADER_SIZE + 1);
  uint8_t byte = 0;
  for (uint32_t exchange = 1; exchange <= 0x10001; exchange++) {
    ASSERT_EQ(QVR_readmemFarEnd(0, kFarEndAddress, &byte, 1), QVR_E_STATUS_OK);
    ASSERT_EQ(driver.lastNumber, exchange & 0xFFFF);
  }
}

TEST_F(FarEndMemory, StopsAtAFailedPieceAndKeepsThePiecesBefore) {
  const Bytes first(512, 1);
  driver_.expect(readsFarEnd(0, 1, kFarEndAddress, first) +
                 asksFarEndMemory(0, 2, kFarEndAddress + 512, 512, farEndHeader(0xFFFF, 0, 2, 0)));
  EXPECT_EQ(read(1536), QVR_E_FAREND_EOC_NACK);
  EXPECT_EQ(Bytes(bytes_.begin(), bytes_.begin() + 512), first);
  EXPECT_EQ(Bytes(bytes_.begin() + 512, bytes_.end()), Bytes(1024, 0xAA));
}

TEST_F(FarEndMemory, FailsWhenTheDriverRefusesAPiece) {
  const Script pieces = readsFarEnd(0, 0, kFarEndAddress, Bytes(512)) +
                        readsFarEnd(0, 0, kFarEndAddress + 512, Bytes(512)) +
                        readsFarEnd(0, 0, kFarEndAddress + 1024, Bytes(10));
  uint16_t sequence = 0;
  for (size_t position = 0; position < pieces.size(); position++) {
    Script script;
    for (uint32_t piece = 0; piece <= position; piece++) {
      script =
          script + readsFarEnd(0, ++sequence, kFarEndAddress + piece * 512, Bytes(piece == 2 ? 10 : 512));
    }
    driver_.expect(script.fails(ETIMEDOUT));
    EXPECT_EQ(read(1034), QVR_E_FAILED_SENDING_FAR_END_MSG) << position;
    driver_.verify();
  }
}

TEST_F(FarEndMemory, FailsAfterTheLineLeftShowtime) {
  driver_.expect(readsFarEnd(0, 1, kFarEndAddress, Bytes(512)));
  EXPECT_EQ(read(512), QVR_E_STATUS_OK);
  setLineState(0, 0, LS_DEACTIVATING1);
  EXPECT_EQ(read(512), QVR_E_LINE_NOT_ACTIVE);
}

TEST(FarEndMemoryOfALineThatIsDown, FailsWithoutARequest) {
  enterBothLines();
  ExpectedRequests driver{Script()};
  startDevice(driver, 0, LS_INIT_TRAIN);
  uint8_t bytes[4];
  EXPECT_EQ(QVR_readmemFarEnd(0, kFarEndAddress, bytes, 4), QVR_E_LINE_NOT_ACTIVE);
}

TEST(FarEndMemoryWithoutADevice, ReturnsDeviceNotExists) {
  addLine(0, 0, 0, TRUE);
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  const ExpectedRequests driver(opens(0).fails(ENOENT));
  uint8_t bytes[4];
  EXPECT_EQ(QVR_readmemFarEnd(0, kFarEndAddress, bytes, 4), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_readmemFarEnd(1, kFarEndAddress, bytes, 4), QVR_E_DEVICE_NOT_EXISTS);
}

}  // namespace
