#include "device-files/carried_request.h"

#include <algorithm>

#include "driver/request_buffer.h"

namespace gfast::device_files {

CarriedRequest::CarriedRequest(uint32_t code, const gfast_iocreq& envelope) : envelope_(envelope) {
  const RequestBuffer use = requestBuffer(code, envelope_);
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
