#include "support/far_end_memory.h"

#include "std/byte_order.h"

namespace {

constexpr uint16_t kReadRequest = 2;
constexpr uint16_t kReadAnswer = 0x8002;
constexpr uint32_t kHeaderSize = 12;

}  // namespace

Bytes farEndHeader(uint16_t opcode, size_t length, uint16_t sequence, uint32_t address) {
  Bytes header;
  append16(header, opcode);
  append16(header, static_cast<uint32_t>(length));
  append16(header, sequence);
  append16(header, 0);
  append32(header, address);
  return header;
}

Bytes readAnswer(uint16_t sequence, uint32_t address, const Bytes& data) {
  return farEndHeader(kReadAnswer, data.size(), sequence, address) + data;
}

Script asksFarEndMemory(int device, uint16_t sequence, uint32_t address, size_t length, const Bytes& answer) {
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_READMEM,
                       farEndHeader(kReadRequest, length, sequence, address),
                       static_cast<uint32_t>(kHeaderSize + length), answer);
}

Script readsFarEnd(int device, uint16_t sequence, uint32_t address, const Bytes& data) {
  return asksFarEndMemory(device, sequence, address, data.size(), readAnswer(sequence, address, data));
}

bool isFarEndMemory(const ExpectedCall& call) {
  return call.code == DFEIOCFARENDMSG &&
         call.request.req_u.farendmsg.farend_msg_req_type == MGMT_FAR_END_REQ_TYPE_READMEM;
}
