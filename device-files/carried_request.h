// A driver request of another process on its way to the board and back. The envelope names a buffer in that
// process; the board gets a copy of it, and only what each side has to say to the other is moved.
#pragma once

#include <gfast_api.h>

#include <cstdint>
#include <span>
#include <vector>

namespace gfast::device_files {

// Most bytes of a caller's buffer: as many as the largest far-end message has.
constexpr uint32_t kMostBufferBytes = 65536;

class CarriedRequest {
 public:
  CarriedRequest(uint32_t code, const gfast_iocreq& envelope);
  CarriedRequest(const CarriedRequest&) = delete;
  CarriedRequest& operator=(const CarriedRequest&) = delete;

  // A buffer above kMostBufferBytes is not carried: such a request is to fail with EINVAL.
  bool tooLarge() const { return tooLarge_; }

  // Where the caller's buffer is in the caller's memory. 0: it gave none, or the request has none.
  uintptr_t address() const { return reinterpret_cast<uintptr_t>(theirs_); }

  // The part of the copy that the driver reads, from the buffer's first byte: to be filled before the request
  // is served.
  std::span<char> sent() { return {copy_.data(), sent_}; }

  // How many bytes the driver may fill, from the buffer's first byte.
  uint32_t room() const { return room_; }

  // What the board serves: the envelope with the copy as its buffer.
  gfast_iocreq& served() { return envelope_; }

  // After the request was served: what the caller gets back, its own address put in again, and the part of
  // the buffer that the driver filled.
  const gfast_iocreq& answer();
  std::span<const char> returned() const;

 private:
  gfast_iocreq envelope_;
  char** field_ = nullptr;            // the envelope's address of the buffer
  const uint32_t* copied_ = nullptr;  // the envelope's count of bytes that the driver filled
  char* theirs_ = nullptr;            // never followed: it is an address of the caller's
  uint32_t sent_ = 0;
  uint32_t room_ = 0;
  bool tooLarge_ = false;
  std::vector<char> copy_;
};

}  // namespace gfast::device_files
