// What a field trace holds of the requests that the library makes, and what the recording may never do.
#include "driver/recording_driver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <qvr.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "driver/envelope.h"
#include "support/expected_requests.h"
#include "support/temporary_folder.h"

using namespace gfast;

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

constexpr uint32_t kAddress = 0xD0000000;

// The trace without the moments: neither its first line nor each exchange's first word.
std::string withoutTimes(const std::string& trace) {
  std::istringstream lines(trace);
  std::string text;
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line)) {
    text += (line.starts_with(' ') ? line : line.substr(line.find(' ') + 1)) + '\n';
  }
  return text;
}

class RecordingDriverTest : public testing::Test {
 protected:
  // The library's requests are to be those of the script, and are recorded.
  void expect(const Script& script, bool blanked = false) {
    expected_ = std::make_unique<ExpectedRequests>(script);
    recording_ = std::make_unique<RecordingDriver>(*expected_, file_, blanked);
    installDriver(*recording_);
  }

  std::string trace() const { return folder_.read("trace.txt"); }
  std::string recorded() const { return withoutTimes(trace()); }
  Driver& driver() { return *recording_; }

  TemporaryFolder folder_;
  std::string file_ = folder_.file("trace.txt");

 private:
  std::unique_ptr<ExpectedRequests> expected_;
  std::unique_ptr<RecordingDriver> recording_;
};

void read(uint32_t length, QVR_retval_t result = QVR_E_STATUS_OK) {
  std::vector<uint8_t> bytes(length);
  EXPECT_EQ(QVR_readmem(0, kAddress, bytes.data(), length), result);
}

TEST_F(RecordingDriverTest, BeginsWithWhatItIsAndWhen) {
  expect({});
  EXPECT_THAT(trace(), MatchesRegex("gfast-trace 1 [0-9]+-[0-9]+-[0-9]+T[0-9:]+[.][0-9]+Z\n"));
}

TEST_F(RecordingDriverTest, HasAnOpenAndAReadWithItsBytes) {
  expect(opens(0) + reads(0, kAddress, {1, 2, 3, 4, 0xAB, 0xCD}));
  read(6);
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 memread d0000000 6 = ok 6\n"
            "  < 01020304 abcd\n");
  EXPECT_THAT(trace(), HasSubstr("\n0.0"));
}

TEST_F(RecordingDriverTest, HasEightWordsInALineAndARunAsOneWord) {
  Bytes bytes(80, 0x55);
  for (size_t i = 0; i < 36; i++) {
    bytes[i] = static_cast<uint8_t>(i);
  }
  expect(opens(0) + reads(0, kAddress, bytes));
  read(80);
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 memread d0000000 80 = ok 80\n"
            "  < 00010203 04050607 08090a0b 0c0d0e0f 10111213 14151617 18191a1b 1c1d1e1f\n"
            "  < 20212223 55555555*11\n");
}

TEST_F(RecordingDriverTest, HasTheBytesThatAreSent) {
  expect(opens(0) + writes(0, kAddress, {0x12, 0x34}));
  const uint8_t bytes[] = {0x12, 0x34};
  QVR_writemem(0, kAddress, bytes, sizeof bytes);
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 memwrite d0000000 2 = ok\n"
            "  > 1234\n");
}

TEST_F(RecordingDriverTest, HasWhatAFarEndIsAskedAlthoughItsAnswerReplacesIt) {
  expect(opens(0) + sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_READMEM, {1, 2, 3}, 8, {9, 8, 7, 6, 5}));
  const int descriptor = driver().open(0);
  char buffer[8] = {1, 2, 3};
  gfast_iocreq request = emptyRequest();
  // An assignment of the whole would bring padding, whose bytes nobody chooses.
  gfast_farendmsg& message = request.req_u.farendmsg;
  message.farend_msg_req_type = MGMT_FAR_END_REQ_TYPE_READMEM;
  message.buf = buffer;
  message.bufsize = message.inmsg_datalen = 8;
  message.outmsg_datalen = 3;
  EXPECT_EQ(driver().request(descriptor, DFEIOCFARENDMSG, request), 0);
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 farend 0 2 8 3 = ok 5\n"
            "  > 010203\n"
            "  < 09080706 05\n");
}

TEST_F(RecordingDriverTest, HasTheErrorOfARefusalAndTheCallerSeesIt) {
  expect(opens(0) + reads(0, kAddress, {0, 0, 0, 0}).fails(ETIMEDOUT));
  errno = 0;
  read(4, QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(errno, ETIMEDOUT);
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 memread d0000000 4 = ETIMEDOUT\n");
}

TEST_F(RecordingDriverTest, SaysSameForAnAnswerThatCameBefore) {
  const Bytes word{1, 2, 3, 4};
  const Bytes other{1, 2, 3, 5};
  expect(opens(0) + reads(0, kAddress, word) + reads(0, kAddress, word) +
         reads(0, kAddress, word).fails(EIO) + reads(0, kAddress, word) + reads(0, kAddress, other));
  for (const QVR_retval_t result :
       {QVR_E_STATUS_OK, QVR_E_STATUS_OK, QVR_E_MEMREAD_ERROR, QVR_E_STATUS_OK, QVR_E_STATUS_OK}) {
    read(4, result);
  }
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 memread d0000000 4 = ok 4\n"
            "  < 01020304\n"
            "c 0 memread d0000000 4 = same\n"
            "c 0 memread d0000000 4 = EIO\n"
            "c 0 memread d0000000 4 = ok 4\n"
            "  < 01020304\n"
            "c 0 memread d0000000 4 = ok 4\n"
            "  < 01020305\n");
}

TEST_F(RecordingDriverTest, MarksTheOtherThread) {
  expect(opens(0) + reads(0, kAddress, {1, 2, 3, 4}) + reads(0, kAddress, {1, 2, 3, 4}));
  read(4);
  std::thread([] { read(4); }).join();
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 memread d0000000 4 = ok 4\n"
            "  < 01020304\n"
            "n 0 memread d0000000 4 = ok 4\n"
            "  < 01020304\n");
}

TEST_F(RecordingDriverTest, HasFilesFlashImagesAndRediscovery) {
  expect(opens(0) + downloads(0, "a \"b%.bin") + activates(0, 0xFFFFFFF0) +
         erases(0, FLASHERASE_64KB, 0x10000) + programs(0, "c.bin", 0x20000).fails(ENOENT) + closes(0) +
         rediscovers());
  const int descriptor = driver().open(0);
  gfast_iocreq request = emptyRequest();
  std::strcpy(request.req_u.imgdnld.fw_filename, "a \"b%.bin");
  driver().request(descriptor, DFEIOCIMGDNLD, request);
  request = emptyRequest();
  request.req_u.activate.hw_mem_addr = 0xFFFFFFF0;
  driver().request(descriptor, DFEIOCIMGACT, request);
  request = emptyRequest();
  request.req_u.flasherase = {0x10000, 0, FLASHERASE_64KB};
  driver().request(descriptor, DFEIOCFLASHERASE, request);
  request = emptyRequest();
  std::strcpy(request.req_u.flashprog.fw_filename, "c.bin");
  request.req_u.flashprog.hw_flash_addr = 0x20000;
  driver().request(descriptor, DFEIOCFLASHPROG, request);
  driver().close(descriptor);
  driver().rediscover();
  EXPECT_EQ(recorded(),
            "c 0 open = ok\n"
            "c 0 imgdnld \"a%20%22b%25.bin\" = ok\n"
            "c 0 activate fffffff0 = ok\n"
            "c 0 flasherase 00010000 2 = ok\n"
            "c 0 flashprog 00020000 \"c.bin\" = ENOENT\n"
            "c 0 close\n"
            "c - rediscover\n");
}

TEST_F(RecordingDriverTest, LeavesAFileAloneThatHoldsSomething) {
  folder_.write("trace.txt", "the trace of a crash\n");
  testing::internal::CaptureStderr();
  expect(opens(0) + reads(0, kAddress, {1, 2, 3, 4}));
  read(4);
  EXPECT_EQ(trace(), "the trace of a crash\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "GFAST_TRACE: " + file_ + ": File exists; nothing is recorded from now on\n");
}

TEST_F(RecordingDriverTest, SaysOnceThatAFileCannotBeWrittenAndRequestsGoOn) {
  const struct {
    const char* file;
    const char* reason;
  } cases[] = {{"/dev/full", "No space left on device"}, {"/nonexistent/x", "No such file or directory"}};
  for (const auto& unwritable : cases) {
    file_ = unwritable.file;
    testing::internal::CaptureStderr();
    expect(opens(0) + reads(0, kAddress, {1, 2, 3, 4}) + reads(0, kAddress, {1, 2, 3, 4}) + closes(0));
    const int descriptor = driver().open(0);
    for (int i = 0; i < 2; i++) {
      char bytes[4];
      gfast_iocreq request = emptyRequest();
      request.req_u.memread.hw_mem_addr = kAddress;
      request.req_u.memread.hw_mem_len = 4;
      request.req_u.memread.buf = bytes;
      request.req_u.memread.bufsize = 4;
      EXPECT_EQ(driver().request(descriptor, DFEIOCMEMRD, request), 0);
      EXPECT_EQ(bytes[3], 4);
    }
    driver().close(descriptor);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string("GFAST_TRACE: ") + unwritable.file + ": " +
                                                          unwritable.reason +
                                                          "; nothing is recorded from now on\n");
  }
}

TEST_F(RecordingDriverTest, SurvivesAFileThatMayNotGrow) {
  const rlimit least{100, 100};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &least), 0);
  testing::internal::CaptureStderr();
  Bytes words(900);
  std::iota(words.begin(), words.end(), uint8_t{0});
  expect(opens(0) + reads(0, kAddress, words));
  read(900);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(": File too large; nothing is recorded"));
}

TEST_F(RecordingDriverTest, NeverWaitsForAReaderOfAPipe) {
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  testing::internal::CaptureStderr();
  expect(opens(0));
  EXPECT_GE(driver().open(0), 0);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("No such device or address"));
}

TEST_F(RecordingDriverTest, TakesNoNumberOfAStandardStream) {
  const int kept = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  expect(opens(0));
  EXPECT_EQ(::dup(kept), STDIN_FILENO);
  ::close(kept);
  driver().open(0);
  EXPECT_EQ(recorded(), "c 0 open = ok\n");
}

// Answers each read with the low byte of its address, at once and to any number of threads.
class EchoDriver final : public Driver {
 public:
  int open(int device) override { return 40 + device; }
  int request(int /*descriptor*/, uint32_t /*code*/, gfast_iocreq& request) override {
    std::memset(request.req_u.memread.buf, static_cast<int>(request.req_u.memread.hw_mem_addr & 0xFFU), 4);
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}
};

TEST(RecordingDriverThreads, WriteWholeExchangesEach) {
  constexpr uint32_t each = 500;
  const TemporaryFolder folder;
  EchoDriver echo;
  RecordingDriver recording(echo, folder.file("trace.txt"), false);
  const int descriptor = recording.open(0);
  const auto readAll = [&](uint32_t base) {
    for (uint32_t i = 0; i < each; i++) {
      char bytes[4] = {};
      gfast_iocreq request = emptyRequest();
      request.req_u.memread = {base + i, 4, bytes, 4, 0, 0};
      recording.request(descriptor, DFEIOCMEMRD, request);
    }
  };
  std::thread other(readAll, 0xE0000000);
  readAll(0xD0000000);
  other.join();
  std::istringstream lines(folder.read("trace.txt"));
  std::string line;
  std::getline(lines, line);
  std::getline(lines, line);
  uint32_t read = 0;
  for (; std::getline(lines, line); read++) {
    const size_t address = line.find("memread ") + std::strlen("memread ");
    const bool commands = line[address] == 'd';
    const std::string low = line.substr(address + 6, 2);
    EXPECT_THAT(line, HasSubstr(commands ? " c 0 memread d" : " n 0 memread e"));
    std::getline(lines, line);
    EXPECT_EQ(line, "  < " + low + low + low + low);
  }
  EXPECT_EQ(read, 2 * each);
}

TEST(RecordedIfAsked, IsTheDriverItselfWithoutAFileInTheEnvironment) {
  ExpectedRequests expected({});
  ::unsetenv("GFAST_TRACE");
  EXPECT_EQ(&recordedIfAsked(expected), &expected);
  ::setenv("GFAST_TRACE", "", 1);
  EXPECT_EQ(&recordedIfAsked(expected), &expected);
}

TEST(RecordedIfAsked, BlanksWhenTheEnvironmentSaysSo) {
  const TemporaryFolder folder;
  ExpectedRequests expected({});
  ::setenv("GFAST_TRACE", folder.file("a").c_str(), 1);
  const std::unique_ptr<Driver> open(&recordedIfAsked(expected));
  ::setenv("GFAST_TRACE", folder.file("b").c_str(), 1);
  ::setenv("GFAST_TRACE_BLANK", "1", 1);
  const std::unique_ptr<Driver> blanked(&recordedIfAsked(expected));
  EXPECT_THAT(folder.read("a"), testing::Not(HasSubstr("blanked")));
  EXPECT_THAT(folder.read("b"), HasSubstr("Z blanked\n"));
}

}  // namespace
