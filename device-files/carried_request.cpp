#include "device-files/carried_request.h"

#include <algorithm>

namespace gfast::device_files {

namespace {

// What a kind of request does with the buffer that its envelope names.
struct BufferUse {
  char** field = nullptr;  // null: there is no buffer
  uint32_t size = 0;
  uint32_t sent = 0;                 // bytes that the driver reads
  const uint32_t* copied = nullptr;  // bytes that the driver filled; null: it fills none
};

BufferUse bufferUse(uint32_t code, gfast_iocreq& envelope) {
  auto& u = envelope.req_u;
  switch (code) {
    case DFEIOCMEMRD:
      return {&u.memread.buf, u.memread.bufsize, 0, &u.memread.datalen_copied_to_user};
    case DFEIOCFLASHRD:
      return {&u.flashread.buf, u.flashread.bufsize, 0, &u.flashread.datalen_copied_to_user};
    case DFEIOCMEMWR:
      return {&u.memwrite.buf, u.memwrite.bufsize, u.memwrite.hw_mem_len, nullptr};
    case DFEIOCLOGCFG:
      return {&u.logcfg.buf, u.logcfg.bufsize, u.logcfg.bufsize, nullptr};
    case DFEIOCLOGRD:
    case DFEIOCALMRD:
      return {&u.logalm_read.buf, u.logalm_read.bufsize, 0, &u.logalm_read.datalen_copied_to_user};
    case DFEIOCFARENDMSG:
      return {&u.farendmsg.buf, u.farendmsg.bufsize, u.farendmsg.outmsg_datalen,
              &u.farendmsg.datalen_copied_to_user};
    default:
      return {};
  }
}

}  // namespace

CarriedRequest::CarriedRequest(uint32_t code, const gfast_iocreq& envelope) : envelope_(envelope) {
  const BufferUse use = bufferUse(code, envelope_);
  if (use.field == nullptr || *use.field == nullptr) {
    return;
  }
  tooLarge_ = use.size > kMostBufferBytes;
  if (tooLarge_) {
    return;
  }
  field_ = use.field;
  copied_ = use.copied;
  theirs_ = *use.field;
  // The board refuses a request that sends more than its buffer holds.
  sent_ = std::min(use.sent, use.size);
  room_ = use.copied != nullptr ? use.size : 0;
  // One byte at least: a buffer of no bytes has an address all the same.
  copy_.resize(std::max(use.size, 1U));
  *field_ = copy_.data();
}

const gfast_iocreq& CarriedRequest::answer() {
  if (field_ != nullptr) {
    *field_ = theirs_;
  }
  return envelope_;
}

std::span<const char> CarriedRequest::returned() const {
  return {copy_.data(), copied_ == nullptr ? 0 : std::min(*copied_, room_)};
}

}  // namespace gfast::device_files
