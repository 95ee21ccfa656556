#include "sweeps/faulty_driver.h"

#include <algorithm>
#include <cerrno>
#include <random>
#include <span>

#include "std/byte_order.h"
#include "std/errno_names.h"

using namespace gfast;

namespace {

// What drivers give.
constexpr int kErrnos[] = {EIO,    EINTR, EAGAIN, EINVAL,   ENODEV, ETIMEDOUT, ENOMEM,
                           EFAULT, EBADF, ENOTTY, ENOTCONN, EFBIG,  EMSGSIZE,  EOPNOTSUPP};
constexpr uint32_t kSeeds = 4;

constexpr uint32_t kExtremes32[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x7FC00000, 0x7F800000};
constexpr uint16_t kExtremes16[] = {0, 1, 0x7FFF, 0x8000, 0xFFFF, 2047, 2048};

// Fields of long answers that are tried: the first ones, where headers are, and some drawn by chance.
constexpr uint32_t kFirstWords = 8;
constexpr uint32_t kDrawnWords = 8;

constexpr double kDelay_s = 10;

// The bytes that the driver fills in.
struct Answer {
  char* bytes = nullptr;
  uint32_t room = 0;
  uint32_t* length = nullptr;
};

Answer answerOf(uint32_t code, gfast_iocreq& request) {
  switch (code) {
    case DFEIOCMEMRD: {
      gfast_memread& read = request.req_u.memread;
      return {read.buf, read.bufsize, &read.datalen_copied_to_user};
    }
    case DFEIOCFARENDMSG: {
      gfast_farendmsg& message = request.req_u.farendmsg;
      return {message.buf, message.bufsize, &message.datalen_copied_to_user};
    }
    case DFEIOCALMRD:
    case DFEIOCLOGRD: {
      gfast_logalm_read& read = request.req_u.logalm_read;
      return {read.buf, read.bufsize, &read.datalen_copied_to_user};
    }
    default:
      return {};
  }
}

void spoil(const Fault& fault, const Answer& answer) {
  const std::span<uint8_t> bytes(reinterpret_cast<uint8_t*>(answer.bytes),
                                 std::min(*answer.length, answer.room));
  const uint32_t offset = fault.detail / 16;
  const uint32_t value = fault.detail % 16;
  switch (fault.kind) {
    case FaultKind::kZeros:
    case FaultKind::kOnes:
      std::ranges::fill(bytes, static_cast<uint8_t>(fault.kind == FaultKind::kZeros ? 0 : 0xFF));
      break;
    case FaultKind::kRandom: {
      std::mt19937 random(fault.detail + 1000 * fault.request);
      std::ranges::generate(bytes, [&random] { return static_cast<uint8_t>(random()); });
      break;
    }
    case FaultKind::kWord32:
      if (offset + 4 <= bytes.size()) {
        store_le32(&bytes[offset], kExtremes32[value]);
      }
      break;
    case FaultKind::kWord16:
      if (offset + 2 <= bytes.size()) {
        bytes[offset] = static_cast<uint8_t>(kExtremes16[value]);
        bytes[offset + 1] = static_cast<uint8_t>(kExtremes16[value] >> 8);
      }
      break;
    case FaultKind::kLength:
      *answer.length = fault.detail;
      break;
    default:
      break;
  }
}

// Offsets of the words that are tried.
std::vector<uint32_t> wordsOf(uint32_t number, uint32_t length) {
  std::vector<uint32_t> offsets;
  const uint32_t words = length / 4;
  for (uint32_t i = 0; i < std::min(words, kFirstWords); i++) {
    offsets.push_back(4 * i);
  }
  if (words <= kFirstWords + kDrawnWords) {
    for (uint32_t i = kFirstWords; i < words; i++) {
      offsets.push_back(4 * i);
    }
    return offsets;
  }
  std::mt19937 random(number);
  for (uint32_t i = 0; i < kDrawnWords; i++) {
    offsets.push_back(4 * (kFirstWords + static_cast<uint32_t>(random()) % (words - kFirstWords)));
  }
  return offsets;
}

void addAnswers(std::vector<Fault>& faults, uint32_t number, const SeenRequest& request) {
  const auto add = [&](FaultKind kind, uint32_t detail) { faults.push_back({number, kind, detail}); };
  add(FaultKind::kZeros, 0);
  add(FaultKind::kOnes, 0);
  for (uint32_t seed = 0; seed < kSeeds; seed++) {
    add(FaultKind::kRandom, seed);
  }
  for (const uint32_t offset : wordsOf(number, request.length)) {
    for (uint32_t value = 0; value < std::size(kExtremes32); value++) {
      add(FaultKind::kWord32, 16 * offset + value);
    }
    for (uint32_t value = 0; value < std::size(kExtremes16); value++) {
      add(FaultKind::kWord16, 16 * offset + value);
      add(FaultKind::kWord16, 16 * (offset + 2) + value);
    }
  }
  if (request.code == DFEIOCFARENDMSG) {
    for (uint32_t length = 0; length <= request.room; length++) {
      add(FaultKind::kLength, length);
    }
  } else {
    for (const uint32_t length : {0U, 1U, 2U, 3U, request.length / 2, request.length - 1, request.room}) {
      add(FaultKind::kLength, length);
    }
  }
  // A driver that claims more than there is room for.
  add(FaultKind::kLength, request.room + 1);
  add(FaultKind::kLength, 0x7FFFFFFF);
  add(FaultKind::kLength, 0xFFFFFFFF);
}

}  // namespace

std::string Fault::text() const {
  static constexpr const char* kNames[] = {"errno",  "vanish",  "delay",   "zeros", "ones",
                                           "random", "32 bits", "16 bits", "length"};
  return "request " + std::to_string(request) + ", " + kNames[static_cast<size_t>(kind)] + " " +
         std::to_string(detail);
}

std::vector<Fault> faultsOf(uint32_t number, const SeenRequest& request) {
  std::vector<Fault> faults;
  for (const int error : kErrnos) {
    faults.push_back({number, FaultKind::kErrno, static_cast<uint32_t>(error)});
  }
  faults.push_back({number, FaultKind::kVanish, 0});
  faults.push_back({number, FaultKind::kDelay, 0});
  if (request.room > 0) {
    addAnswers(faults, number, request);
  }
  return faults;
}

void FaultyDriver::begin(const Fault* fault) {
  counting_ = true;
  fault_ = fault;
  vanished_ = -1;
  seen_.count = 0;
}

SeenRequest& FaultyDriver::add(uint32_t code, uint32_t room) {
  SeenRequest& seen = seen_.list[std::min<size_t>(seen_.count, kMostSeen - 1)];
  seen_.count++;
  seen = {code, 0, room};
  return seen;
}

int FaultyDriver::open(int device) {
  if (counting_) {
    const bool fails = isNext() && fault_->kind == FaultKind::kErrno;
    if (isNext() && fault_->kind == FaultKind::kVanish) {
      vanished_ = device;
    }
    add(0, 0);
    if (fails || vanished_ == device) {
      errno = fails ? static_cast<int>(fault_->detail) : ENODEV;
      return -1;
    }
  }
  const int descriptor = console_.board().open(device);
  if (device >= 0 && static_cast<size_t>(device) < descriptors_.size()) {
    descriptors_[static_cast<size_t>(device)] = descriptor;
  }
  return descriptor;
}

int FaultyDriver::request(int descriptor, uint32_t code, gfast_iocreq& request) {
  if (!counting_) {
    return console_.board().request(descriptor, code, request);
  }
  const bool next = isNext();
  SeenRequest& seen = add(code, answerOf(code, request).room);
  if (next && fault_->kind == FaultKind::kVanish) {
    vanished_ = descriptor == descriptors_[0] ? 0 : 1;
  }
  if (vanished_ >= 0 && descriptor == descriptors_[static_cast<size_t>(vanished_)]) {
    errno = ENODEV;
    return -1;
  }
  if (next) {
    return spoiled(descriptor, code, request);
  }
  const int result = console_.board().request(descriptor, code, request);
  if (const uint32_t* const length = answerOf(code, request).length; length != nullptr) {
    seen.length = result < 0 ? 0 : *length;
  }
  return result;
}

int FaultyDriver::spoiled(int descriptor, uint32_t code, gfast_iocreq& request) {
  if (fault_->kind == FaultKind::kErrno) {
    errno = static_cast<int>(fault_->detail);
    return -1;
  }
  if (fault_->kind == FaultKind::kDelay) {
    console_.clock().sleep(std::chrono::microseconds(static_cast<int64_t>(kDelay_s * 1e6)));
  }
  const int result = console_.board().request(descriptor, code, request);
  if (const Answer answer = answerOf(code, request); result >= 0 && answer.length != nullptr) {
    spoil(*fault_, answer);
  }
  return result;
}
