// A driver that passes requests on to a board and keeps its answers, and gives the same answers again without
// the board: so that what a command costs is told apart from what a board made of software costs.
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "chip/far_end_messages.h"
#include "driver/driver.h"
#include "driver/request_buffer.h"

class RememberedBoard final : public gfast::Driver {
 public:
  explicit RememberedBoard(gfast::Driver& board) : board_(board) {}

  // From now on the board answers, and its answers are kept instead of earlier ones.
  void listen() {
    answers_.clear();
    repeats_ = false;
  }

  // From now on the kept answers are given, in their order.
  void repeat() {
    next_ = 0;
    repeats_ = true;
  }

  // As many requests as were kept were repeated.
  bool isThrough() const { return next_ == answers_.size(); }
  size_t requests() const { return answers_.size(); }

  int open(int device) override { return board_.open(device); }
  void close(int descriptor) override { board_.close(descriptor); }
  void rediscover() override { board_.rediscover(); }

  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    return repeats_ ? repeated(code, request) : kept(descriptor, code, request);
  }

 private:
  struct Answer {
    uint32_t code;
    int result;
    gfast_iocreq envelope;
    std::vector<char> bytes;
  };

  int kept(int descriptor, uint32_t code, gfast_iocreq& request) {
    const int result = board_.request(descriptor, code, request);
    const gfast::RequestBuffer buffer = gfast::requestBuffer(code, request);
    std::vector<char> bytes;
    if (buffer.copied != nullptr && *buffer.field != nullptr) {
      bytes.assign(*buffer.field, *buffer.field + buffer.size);
    }
    answers_.push_back({code, result, request, std::move(bytes)});
    return result;
  }

  // An answer of the far end's memory bears the number of its request.
  static bool isNumbered(uint32_t code, const gfast_iocreq& request) {
    return code == DFEIOCFARENDMSG &&
           request.req_u.farendmsg.farend_msg_req_type == MGMT_FAR_END_REQ_TYPE_READMEM;
  }

  int repeated(uint32_t code, gfast_iocreq& request) {
    if (next_ == answers_.size() || answers_[next_].code != code) {
      std::fprintf(stderr, "RememberedBoard: a request that was not made before\n");
      std::exit(EXIT_FAILURE);
    }
    const Answer& answer = answers_[next_++];
    char** const field = gfast::requestBuffer(code, request).field;
    char* const bytes = field == nullptr ? nullptr : *field;
    std::array<char, 2> number{};
    if (isNumbered(code, request)) {
      std::copy_n(bytes + gfast::MGMT_HEADER_SN, number.size(), number.begin());
    }
    request = answer.envelope;
    if (bytes != nullptr) {
      *gfast::requestBuffer(code, request).field = bytes;
      std::copy(answer.bytes.begin(), answer.bytes.end(), bytes);
    }
    if (isNumbered(code, request)) {
      std::copy_n(number.begin(), number.size(), bytes + gfast::MGMT_HEADER_SN);
    }
    return answer.result;
  }

  gfast::Driver& board_;
  std::vector<Answer> answers_;
  size_t next_ = 0;
  bool repeats_ = false;
};
