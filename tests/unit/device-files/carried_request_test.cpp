// Which bytes of a request move, and in which direction.
#include "device-files/carried_request.h"

#include <gtest/gtest.h>

#include <cstring>

#include "device-files/device_names.h"
#include "driver/envelope.h"

using namespace gfast;
using namespace gfast::device_files;

namespace {

char theirs[8];

struct Moved {
  uint32_t sent;
  uint32_t room;
};

Moved movedBy(uint32_t code, const gfast_iocreq& envelope) {
  CarriedRequest request(code, envelope);
  EXPECT_FALSE(request.tooLarge());
  EXPECT_EQ(request.address(), reinterpret_cast<uintptr_t>(theirs));
  return {static_cast<uint32_t>(request.sent().size()), request.room()};
}

void expectMoved(const Moved& moved, uint32_t sent, uint32_t room) {
  EXPECT_EQ(moved.sent, sent);
  EXPECT_EQ(moved.room, room);
}

TEST(CarriedRequest, MovesWhatItsKindMoves) {
  gfast_iocreq envelope = emptyRequest();
  auto& u = envelope.req_u;
  u.memread = {0, 4, theirs, 8, 0, 0};
  expectMoved(movedBy(DFEIOCMEMRD, envelope), 0, 8);
  expectMoved(movedBy(DFEIOCFLASHRD, envelope), 0, 8);
  expectMoved(movedBy(DFEIOCMEMWR, envelope), 4, 0);
  envelope = emptyRequest();
  u.logcfg = {theirs, 8};
  expectMoved(movedBy(DFEIOCLOGCFG, envelope), 8, 0);
  u.logalm_read = {theirs, 8, 0, 0};
  expectMoved(movedBy(DFEIOCLOGRD, envelope), 0, 8);
  expectMoved(movedBy(DFEIOCALMRD, envelope), 0, 8);
  u.farendmsg = {0, 0, theirs, 8, 3, 8, 0};
  expectMoved(movedBy(DFEIOCFARENDMSG, envelope), 3, 8);
}

TEST(CarriedRequest, SendsNoMoreThanTheBufferHolds) {
  gfast_iocreq envelope = emptyRequest();
  envelope.req_u.memwrite = {0, 9, theirs, 8};
  expectMoved(movedBy(DFEIOCMEMWR, envelope), 8, 0);
  envelope.req_u.farendmsg = {0, 0, theirs, 8, UINT32_MAX, 8, 0};
  expectMoved(movedBy(DFEIOCFARENDMSG, envelope), 8, 8);
}

TEST(CarriedRequest, GivesBackTheAddressAndWhatTheDriverFilled) {
  gfast_iocreq envelope = emptyRequest();
  envelope.req_u.memread = {0, 4, theirs, 8, 0, 0};
  CarriedRequest request(DFEIOCMEMRD, envelope);
  auto& served = request.served().req_u.memread;
  EXPECT_NE(served.buf, theirs);
  std::memcpy(served.buf, "abcdefgh", 8);
  EXPECT_EQ(request.returned().size(), 0U);
  served.datalen_copied_to_user = 3;
  EXPECT_EQ(std::string(request.returned().begin(), request.returned().end()), "abc");
  served.datalen_copied_to_user = UINT32_MAX;
  EXPECT_EQ(request.returned().size(), 8U);
  EXPECT_EQ(request.answer().req_u.memread.buf, theirs);
}

TEST(CarriedRequest, HasNoBufferWithoutAnAddressOrAField) {
  gfast_iocreq envelope = emptyRequest();
  envelope.req_u.memread = {0, 4, nullptr, 8, 0, 0};
  CarriedRequest without(DFEIOCMEMRD, envelope);
  EXPECT_EQ(without.served().req_u.memread.buf, nullptr);
  EXPECT_EQ(without.room(), 0U);
  std::memset(&envelope.req_u, 0xFF, sizeof envelope.req_u);
  for (const uint32_t code : {DFEIOCIMGACT, DFEIOCIMGDNLD, DFEIOCFLASHERASE, DFEIOCFLASHPROG, DFEIOCOAMGET,
                              DFEIOC_REQUEST_CODE(0), 0U}) {
    CarriedRequest request(code, envelope);
    EXPECT_FALSE(request.tooLarge());
    EXPECT_EQ(request.address(), 0U);
    EXPECT_EQ(std::memcmp(&request.answer(), &envelope, sizeof envelope), 0);
  }
}

TEST(CarriedRequest, IsTooLargeAbove64KiB) {
  gfast_iocreq envelope = emptyRequest();
  envelope.req_u.logalm_read = {theirs, 65536, 0, 0};
  EXPECT_FALSE(CarriedRequest(DFEIOCLOGRD, envelope).tooLarge());
  envelope.req_u.logalm_read.bufsize = 65537;
  EXPECT_TRUE(CarriedRequest(DFEIOCLOGRD, envelope).tooLarge());
}

TEST(DeviceNames, AreTheDriversAndNoOthers) {
  EXPECT_EQ(deviceOfPath("/dev/gfdfe0"), 0);
  EXPECT_EQ(deviceOfPath("/dev/gfdfe1"), 1);
  for (const char* other :
       {"", "/dev/", "/dev/gfdfe", "/dev/gfdfe2", "/dev/gfdfe/", "/dev/gfdfe00", "gfdfe0"}) {
    EXPECT_EQ(deviceOfPath(other), std::nullopt) << other;
  }
}

}  // namespace
