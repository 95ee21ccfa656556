#include <fcntl.h>
#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

char buffer[2048];

std::string memRead(Bench& bench, uint32_t address, uint16_t length, char* to, uint32_t size) {
  bench.request = {};
  bench.request.req_u.memread = {address, length, to, size, 77, 77};
  std::string result = bench.send(0, DFEIOCMEMRD);
  if (result != "ok") {
    EXPECT_EQ(bench.request.req_u.memread.datalen_copied_to_user, 0U);
  }
  return result;
}

std::string memWrite(Bench& bench, uint32_t address, uint16_t length, char* from, uint32_t size) {
  bench.request = {};
  bench.request.req_u.memwrite = {address, length, from, size};
  return bench.send(0, DFEIOCMEMWR);
}

}  // namespace

TEST(HostileRequests, MemoryReads) {
  Bench bench;
  EXPECT_EQ(memRead(bench, 0, 900, buffer, 900), "ok");
  EXPECT_EQ(memRead(bench, 0, 901, buffer, 901), "EINVAL");
  EXPECT_EQ(memRead(bench, 0, 0xFFFF, buffer, 0xFFFF), "EINVAL");
  EXPECT_EQ(memRead(bench, 0, 4, buffer, 3), "EINVAL");
  EXPECT_EQ(memRead(bench, 0, 4, nullptr, 4), "EFAULT");
  EXPECT_EQ(memRead(bench, 0, 0, nullptr, 0), "ok");
  EXPECT_EQ(memRead(bench, 0xFFFFFFFE, 4, buffer, 4), "EINVAL");
  EXPECT_EQ(memRead(bench, 0xFFFFFFFC, 4, buffer, 4), "ok");
}

TEST(HostileRequests, MemoryWrites) {
  Bench bench;
  EXPECT_EQ(memWrite(bench, 0, 128, buffer, 128), "ok");
  EXPECT_EQ(memWrite(bench, 0, 129, buffer, 129), "EINVAL");
  EXPECT_EQ(memWrite(bench, 0, 0xFFFF, buffer, 0xFFFF), "EINVAL");
  EXPECT_EQ(memWrite(bench, 0, 4, buffer, 3), "EINVAL");
  EXPECT_EQ(memWrite(bench, 0, 4, nullptr, 4), "EFAULT");
  EXPECT_EQ(memWrite(bench, 0, 0, nullptr, 0), "ok");
  EXPECT_EQ(memWrite(bench, 0xFFFFFFFE, 4, buffer, 4), "EINVAL");
}

TEST(HostileRequests, EmptyWritesToRegistersDoNothing) {
  Bench bench("[[device]]\nline = \"showtime\"");
  EXPECT_EQ(memWrite(bench, VIRT_ADDR_REINIT(0), 0, buffer, 0), "ok");
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(HostileRequests, EventAndLogReads) {
  Bench bench;
  for (const uint32_t code : {DFEIOCALMRD, DFEIOCLOGRD}) {
    bench.request = {};
    bench.request.req_u.logalm_read = {nullptr, 1024, 77, 77};
    EXPECT_EQ(bench.send(0, code), "EFAULT");
    EXPECT_EQ(bench.request.req_u.logalm_read.datalen_copied_to_user, 0U);
    bench.request.req_u.logalm_read = {buffer, 0, 77, 77};
    EXPECT_EQ(bench.send(0, code), "ok");
    EXPECT_EQ(bench.request.req_u.logalm_read.datalen_copied_to_user, 0U);
  }
}

TEST(HostileRequests, FarEndMessages) {
  Bench bench("[[device]]\nline = \"showtime\"\n[[farend]]\nline = 0\nrequest = 1\nresponse = \"01\"");
  const struct {
    char* buf;
    uint32_t bufsize, request, response;
    const char* result;
  } cases[] = {
      {nullptr, 0, 0, 0, "ok"},
      {nullptr, 4, 4, 4, "EFAULT"},
      {nullptr, 4, 0, 4, "EFAULT"},
      {buffer, 4, 5, 4, "EINVAL"},
      {buffer, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, "EINVAL"},
      {buffer, 4, 0xFFFFFFFF, 4, "EINVAL"},
  };
  for (const auto& each : cases) {
    bench.request = {};
    bench.request.req_u.farendmsg = {0, 1, each.buf, each.bufsize, each.request, each.response, 77};
    EXPECT_EQ(bench.send(0, DFEIOCFARENDMSG), each.result) << each.bufsize;
    EXPECT_EQ(bench.request.req_u.farendmsg.datalen_copied_to_user, 0U);
  }
}

TEST(HostileRequests, FlashReads) {
  Bench bench;
  bench.request = {};
  bench.request.req_u.flashread = {0, 4, nullptr, 4, 0, 0};
  EXPECT_EQ(bench.send(0, DFEIOCFLASHRD), "EFAULT");
  bench.request.req_u.flashread = {0, 4, buffer, 2, 0, 0};
  EXPECT_EQ(bench.send(0, DFEIOCFLASHRD), "EINVAL");
}

TEST(HostileRequests, UnknownCodes) {
  Bench bench;
  bench.request = {};
  for (const uint32_t code : {0U, DFEIOCMEMRD - 1, DFEIOC_REQUEST_CODE(17), 0xFFFFFFFFU}) {
    EXPECT_EQ(bench.send(0, code), "ENOTTY") << code;
  }
}

TEST(HostileRequests, RequestsThatTheBoardDoesNotServe) {
  Bench bench;
  bench.request = {};
  for (const uint32_t code : {DFEIOCOAMGET, DFEIOCOAMSET, DFEIOCSETPORTTAG, DFEIOCGETRESULT, DFEIOCDEVINFO}) {
    EXPECT_EQ(bench.send(0, code), "EOPNOTSUPP") << code;
  }
}

TEST(HostileRequests, DescriptorsOfOthers) {
  Bench bench;
  gfast_iocreq request{};
  for (const int descriptor : {-1, 0, 1, 100000}) {
    errno = 0;
    EXPECT_EQ(bench.board.request(descriptor, DFEIOCMEMRD, request), -1);
    EXPECT_EQ(errno, EBADF);
  }
  bench.board.close(-1);
  bench.board.close(0);
  EXPECT_NE(::fcntl(0, F_GETFD), -1);
}

TEST(HostileRequests, AClosedDescriptor) {
  Bench bench;
  bench.board.close(bench.descriptors[0]);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "EBADF");
  EXPECT_EQ(bench.read(1, SBR_REG_ADDRESS, 4), "00 00 80 01");
}
