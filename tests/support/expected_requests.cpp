#include "support/expected_requests.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

using namespace gfast;

namespace {

// After so many unexpected calls the process ends: a library that waits for a chip may never stop asking.
constexpr int kMostUnexpectedCalls = 100;

struct RequestKind {
  uint32_t code;
  const char* name;
};

constexpr RequestKind kRequestKinds[] = {
    {DFEIOCMEMRD, "memory read"},        {DFEIOCMEMWR, "memory write"},
    {DFEIOCIMGACT, "activation"},        {DFEIOCIMGDNLD, "image download"},
    {DFEIOCFLASHERASE, "flash erase"},   {DFEIOCFLASHPROG, "flash program"},
    {DFEIOCLOGCFG, "log configuration"}, {DFEIOCLOGRD, "log read"},
    {DFEIOCALMRD, "event read"},         {DFEIOCFARENDMSG, "far-end message"},
};

const char* nameOf(uint32_t code) {
  const auto* kind = std::ranges::find(kRequestKinds, code, &RequestKind::code);
  return kind == std::end(kRequestKinds) ? "unknown request" : kind->name;
}

// Where the record of a request keeps its buffer; nullptr if it has none.
char** bufferOf(uint32_t code, gfast_iocreq& request) {
  switch (code) {
    case DFEIOCMEMRD:
      return &request.req_u.memread.buf;
    case DFEIOCMEMWR:
      return &request.req_u.memwrite.buf;
    case DFEIOCLOGCFG:
      return &request.req_u.logcfg.buf;
    case DFEIOCLOGRD:
    case DFEIOCALMRD:
      return &request.req_u.logalm_read.buf;
    case DFEIOCFARENDMSG:
      return &request.req_u.farendmsg.buf;
    default:
      return nullptr;
  }
}

void setCopied(uint32_t code, gfast_iocreq& request, uint32_t count) {
  switch (code) {
    case DFEIOCMEMRD:
      request.req_u.memread.datalen_rcvd_from_hw = request.req_u.memread.datalen_copied_to_user = count;
      break;
    case DFEIOCLOGRD:
    case DFEIOCALMRD:
      request.req_u.logalm_read.datalen_rcvd_from_hw = request.req_u.logalm_read.datalen_copied_to_user =
          count;
      break;
    case DFEIOCFARENDMSG:
      request.req_u.farendmsg.datalen_copied_to_user = count;
      break;
    default:
      break;
  }
}

// The envelope without the buffer's address, and without what the driver filled in for the request before: a
// queue is read with the same envelope again and again.
void strip(uint32_t code, gfast_iocreq& request) {
  if (char** buffer = bufferOf(code, request)) {
    *buffer = nullptr;
  }
  if (code == DFEIOCLOGRD || code == DFEIOCALMRD) {
    setCopied(code, request, 0);
  }
}

bool sameBytes(const gfast_iocreq& a, const gfast_iocreq& b) {
  const auto* from = reinterpret_cast<const char*>(&a);
  return std::equal(from, from + sizeof a, reinterpret_cast<const char*>(&b));
}

std::string hexOf(const gfast_iocreq& request) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(&request);
  std::string text;
  for (size_t i = 0; i < sizeof request; i++) {
    text += fmt::format("{}{:02x}", i % 16 == 0 ? "\n  " : " ", bytes[i]);
  }
  return text;
}

std::string describe(ExpectedCall::Kind kind, int device, uint32_t code) {
  switch (kind) {
    case ExpectedCall::Kind::kOpen:
      return fmt::format("open of device {}", device);
    case ExpectedCall::Kind::kClose:
      return fmt::format("close of device {}", device);
    case ExpectedCall::Kind::kRediscover:
      return "rediscovery";
    default:
      return fmt::format("{} on device {}", nameOf(code), device);
  }
}

std::string describe(const ExpectedCall& call) {
  return describe(call.kind, call.device, call.code);
}

}  // namespace

ExpectedRequests::ExpectedRequests(const Script& script) : left_(script.calls()) {
  installDriver(*this);
}

ExpectedRequests::~ExpectedRequests() {
  verify();
}

void ExpectedRequests::expect(const Script& script) {
  const std::lock_guard guard(lock_);
  left_.insert(left_.end(), script.calls().begin(), script.calls().end());
}

size_t ExpectedRequests::left() {
  const std::lock_guard guard(lock_);
  return left_.size();
}

void ExpectedRequests::verify() {
  const std::lock_guard guard(lock_);
  for (const ExpectedCall& call : left_) {
    ADD_FAILURE() << "never made: " << describe(call);
  }
  left_.clear();
}

bool ExpectedRequests::take(ExpectedCall::Kind kind, int device, uint32_t code, const std::string& made,
                            ExpectedCall& next) {
  const std::lock_guard guard(lock_);
  const bool expected = !left_.empty() && left_.front().kind == kind && left_.front().device == device &&
                        left_.front().code == code;
  if (expected) {
    next = left_.front();
    left_.erase(left_.begin());
    return true;
  }
  ADD_FAILURE() << made << ", but expected was "
                << (left_.empty() ? "nothing more" : describe(left_.front()));
  if (++unexpected_ >= kMostUnexpectedCalls) {
    std::abort();
  }
  errno = EPROTO;
  return false;
}

int ExpectedRequests::open(int device) {
  ExpectedCall next{};
  if (!take(ExpectedCall::Kind::kOpen, device, 0, describe(ExpectedCall::Kind::kOpen, device, 0), next)) {
    return -1;
  }
  errno = next.error;
  return next.error == 0 ? descriptorOf(device) : -1;
}

int ExpectedRequests::request(int descriptor, uint32_t code, gfast_iocreq& request) {
  const int device = descriptor - descriptorOf(0);
  gfast_iocreq stripped = request;
  strip(code, stripped);
  ExpectedCall next{};
  const std::string made = describe(ExpectedCall::Kind::kRequest, device, code);
  if (!take(ExpectedCall::Kind::kRequest, device, code, made + hexOf(stripped), next)) {
    return -1;
  }
  EXPECT_TRUE(sameBytes(stripped, next.request))
      << made << " arrived as" << hexOf(stripped) << "\ninstead of" << hexOf(next.request);
  char** buffer = bufferOf(code, request);
  if (buffer != nullptr && next.bufferSize > 0) {
    EXPECT_EQ(Bytes(*buffer, *buffer + next.in.size()), next.in) << made;
    if (next.error == 0) {
      std::copy(next.out.begin(), next.out.end(), *buffer);
    }
  }
  setCopied(code, request, next.copied);
  errno = next.error;
  return next.error == 0 ? 0 : -1;
}

void ExpectedRequests::close(int descriptor) {
  const int device = descriptor - descriptorOf(0);
  ExpectedCall next{};
  take(ExpectedCall::Kind::kClose, device, 0, describe(ExpectedCall::Kind::kClose, device, 0), next);
}

void ExpectedRequests::rediscover() {
  ExpectedCall next{};
  take(ExpectedCall::Kind::kRediscover, 0, 0, "rediscovery", next);
}
