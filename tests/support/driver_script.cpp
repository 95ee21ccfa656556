#include "support/driver_script.h"

#include <algorithm>
#include <cstring>

#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr size_t kMostBytesARead = 900;
constexpr size_t kMostBytesAWrite = 128;

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
  return reads(device, address, words({value}));
}

Script writesWord(int device, uint32_t address, uint32_t value) {
  return writes(device, address, words({value}));
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

Script inPieces(const Bytes& bytes, size_t most,
                const std::function<Script(uint32_t offset, const Bytes& piece)>& each) {
  Script script;
  for (size_t done = 0; done < bytes.size(); done += most) {
    const Bytes piece(bytes.data() + done, bytes.data() + std::min(done + most, bytes.size()));
    script = script + each(static_cast<uint32_t>(done), piece);
  }
  return script;
}

Script readsInPieces(int device, uint32_t address, const Bytes& bytes) {
  return inPieces(bytes, kMostBytesARead, [&](uint32_t offset, const Bytes& piece) {
    return reads(device, address + offset, piece);
  });
}

Script writesInPieces(int device, uint32_t address, const Bytes& bytes) {
  return inPieces(bytes, kMostBytesAWrite, [&](uint32_t offset, const Bytes& piece) {
    return writes(device, address + offset, piece);
  });
}
