#include "support/expected_requests.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

// A library that asks on and on what nobody expects, as it may while it waits for a chip, ends the test.
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

// The envelope without what is the process's own (the buffer's address) or left over from the request before
// (what the driver filled in when a queue is read over and over).
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

ExpectedCall seamCall(ExpectedCall::Kind kind, int device) {
  ExpectedCall call{};
  call.kind = kind;
  call.device = device;
  return call;
}

ExpectedCall requestCall(int device, uint32_t code) {
  ExpectedCall call = seamCall(ExpectedCall::Kind::kRequest, device);
  call.code = code;
  std::memset(&call.request, 0, sizeof call.request);
  return call;
}

Script memoryCall(int device, uint32_t code, uint32_t address, size_t length, const Bytes& in,
                  const Bytes& out) {
  ExpectedCall call = requestCall(device, code);
  gfast_memwrite& record = call.request.req_u.memwrite;  // begins as memread does
  record.hw_mem_addr = address;
  record.hw_mem_len = static_cast<uint16_t>(length);
  record.bufsize = call.bufferSize = static_cast<uint32_t>(length);
  call.in = in;
  call.out = out;
  call.copied = static_cast<uint32_t>(out.size());
  return Script(call);
}

void putFilename(char (&field)[MAX_FW_FN_SIZE], const std::string& filename) {
  std::copy_n(filename.begin(), std::min(filename.size(), sizeof field), field);
}

Script queueCall(int device, uint32_t code, const Bytes& records) {
  ExpectedCall call = requestCall(device, code);
  call.request.req_u.logalm_read.bufsize = call.bufferSize = QVR_K_MAX_EVT_BUFFER_LEN;
  call.out = records;
  call.copied = static_cast<uint32_t>(records.size());
  return Script(call);
}

Bytes littleEndian(uint32_t value) {
  Bytes bytes(4);
  store_le32(bytes.data(), value);
  return bytes;
}

}  // namespace

Script Script::operator+(const Script& next) const {
  Script both = *this;
  both.calls_.insert(both.calls_.end(), next.calls_.begin(), next.calls_.end());
  return both;
}

Script Script::times(int count) const {
  Script repeated;
  for (int i = 0; i < count; i++) {
    repeated = repeated + *this;
  }
  return repeated;
}

Script Script::fails(int error, uint32_t copied) const {
  Script failing = failingAt(calls_.size() - 1, error);
  failing.calls_.back().copied = copied;
  return failing;
}

Script Script::failingAt(size_t position, int error) const {
  Script failing = *this;
  failing.calls_.resize(position + 1);
  ExpectedCall& call = failing.calls_.back();
  call.error = error;
  call.copied = 0;
  return failing;
}

Script opens(int device) {
  return Script(seamCall(ExpectedCall::Kind::kOpen, device));
}

Script closes(int device) {
  return Script(seamCall(ExpectedCall::Kind::kClose, device));
}

Script rediscovers() {
  return Script(seamCall(ExpectedCall::Kind::kRediscover, 0));
}

Script reads(int device, uint32_t address, const Bytes& bytes) {
  return memoryCall(device, DFEIOCMEMRD, address, bytes.size(), {}, bytes);
}

Script writes(int device, uint32_t address, const Bytes& bytes) {
  return memoryCall(device, DFEIOCMEMWR, address, bytes.size(), bytes, {});
}

Script readsWord(int device, uint32_t address, uint32_t value) {
  return reads(device, address, littleEndian(value));
}

Script writesWord(int device, uint32_t address, uint32_t value) {
  return writes(device, address, littleEndian(value));
}

Script activates(int device, uint32_t address) {
  ExpectedCall call = requestCall(device, DFEIOCIMGACT);
  call.request.req_u.activate.hw_mem_addr = address;
  return Script(call);
}

Script downloads(int device, const std::string& filename) {
  ExpectedCall call = requestCall(device, DFEIOCIMGDNLD);
  putFilename(call.request.req_u.imgdnld.fw_filename, filename);
  return Script(call);
}

Script erases(int device, flasherase_type type, uint32_t address) {
  ExpectedCall call = requestCall(device, DFEIOCFLASHERASE);
  call.request.req_u.flasherase.hw_flash_addr = address;
  call.request.req_u.flasherase.erasetype = type;
  return Script(call);
}

Script programs(int device, const std::string& filename, uint32_t address) {
  ExpectedCall call = requestCall(device, DFEIOCFLASHPROG);
  putFilename(call.request.req_u.flashprog.fw_filename, filename);
  call.request.req_u.flashprog.hw_flash_addr = address;
  return Script(call);
}

Script configuresLog(int device) {
  ExpectedCall call = requestCall(device, DFEIOCLOGCFG);
  call.request.req_u.logcfg.bufsize = call.bufferSize = GFAST_LOGCFG_BODY_SIZE;
  call.in = Bytes(GFAST_LOGCFG_BODY_SIZE, 0);
  return Script(call);
}

Script readsLog(int device, const Bytes& records) {
  return queueCall(device, DFEIOCLOGRD, records);
}

Script readsEvent(int device, const Bytes& event) {
  return queueCall(device, DFEIOCALMRD, event);
}

Script sendsToFarEnd(int device, uint16_t narrowLine, MGMT_FAR_END_REQ_TYPE type, const Bytes& message,
                     uint32_t responseSize, const Bytes& response) {
  ExpectedCall call = requestCall(device, DFEIOCFARENDMSG);
  gfast_farendmsg& record = call.request.req_u.farendmsg;
  record.port_idx = narrowLine;
  record.farend_msg_req_type = static_cast<uint16_t>(type);
  record.bufsize = record.inmsg_datalen = call.bufferSize = responseSize;
  record.outmsg_datalen = static_cast<uint32_t>(message.size());
  call.in = message;
  call.out = response;
  call.copied = static_cast<uint32_t>(response.size());
  return Script(call);
}

ChipIdentity::ChipIdentity() : info(DEV_INF_SIZE), b0Regs(B0_REGS_SIZE) {
  setLinkState(LS_IDLE);
}

void ChipIdentity::setWord(size_t infoOffset, uint32_t value) {
  store_le32(&info[infoOffset], value);
}

void ChipIdentity::setLinkState(G9701_linkState_t state) {
  store_le32(&b0Regs[B0_REGS_LINK_STATES], state);
}

Script readsIdentity(int device, const ChipIdentity& chip) {
  return readsWord(device, SBR_REG_ADDRESS, chip.sbr) + reads(device, VIRT_ADDR_DEVICE_INFO_READ, chip.info) +
         reads(device, VIRT_ADDR_B0_REGS, chip.b0Regs);
}

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
