#include "virtual-board/board/far_end.h"

#include <gfast_api.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "chip/far_end_messages.h"
#include "chip/registers.h"
#include "std/byte_order.h"
#include "virtual-board/base/sparse_memory.h"
#include "virtual-board/measured/tone_areas.h"

namespace gfast::board {

namespace {

// The other end can read the mapped part of the address space.
constexpr uint32_t kFirstReadable = IO_BASE_ADDRESS;

struct MemoryMessage {
  uint16_t length;
  uint32_t address;
};

// Empty: the request is not one for memory, or its length or address is wrong.
std::optional<MemoryMessage> parseMemoryRequest(std::span<const uint8_t> request, uint16_t opcode) {
  if (request.size() < MGMT_HEADER_SIZE || load_le16(&request[MGMT_HEADER_OPCODE]) != opcode) {
    return std::nullopt;
  }
  const MemoryMessage message{load_le16(&request[MGMT_HEADER_LEN]), load_le32(&request[MGMT_HEADER_ADDRESS])};
  const size_t body = opcode == MGMT_OPCODE_WRITEMEM ? message.length : 0;
  if (message.length == 0 || message.length > MGMT_MAX_DATA || request.size() != MGMT_HEADER_SIZE + body ||
      message.address < kFirstReadable || !inAddressSpace(message.address, message.length)) {
    return std::nullopt;
  }
  return message;
}

// The request's header with another opcode. What a short request does not have is zero.
FarEnd::Response header(std::span<const uint8_t> request, uint16_t opcode) {
  FarEnd::Response response(MGMT_HEADER_SIZE);
  std::copy_n(request.begin(), std::min(request.size(), MGMT_HEADER_SIZE), response.begin());
  store_le16(&response[MGMT_HEADER_OPCODE], opcode);
  return response;
}

FarEnd::Response refusal(std::span<const uint8_t> request) {
  FarEnd::Response response = header(request, MGMT_OPCODE_NACK);
  store_le16(&response[MGMT_HEADER_LEN], 0);
  return response;
}

}  // namespace

// By message type. The modem does not answer a type without an entry.
const FarEnd::Answer FarEnd::kAnswers[MGMT_FAR_END_REQ_TYPE_LAST] = {
    &FarEnd::counters, &FarEnd::inventory,     &FarEnd::readMemory, &FarEnd::writeMemory,
    nullptr,           &FarEnd::pmdParameters, &FarEnd::pmdVector};

FarEnd::FarEnd(int line, Chip& remote, std::function<LineInsight()> insight,
               const std::vector<FarEndReplacement>& replacements)
    : remote_(remote), insight_(std::move(insight)) {
  std::copy_if(replacements.begin(), replacements.end(), std::back_inserter(replacements_),
               [line](const FarEndReplacement& replacement) { return replacement.line == line; });
}

int FarEnd::answer(uint32_t type, std::span<const uint8_t> request, Response& response) {
  const auto replaced = std::find_if(replacements_.begin(), replacements_.end(),
                                     [type](const FarEndReplacement& r) { return r.request == type; });
  if (replaced != replacements_.end()) {
    response = replaced->response;
    return replaced->error;
  }
  if (type >= MGMT_FAR_END_REQ_TYPE_LAST) {
    return EINVAL;
  }
  if (const int error = remote_.unreachable(); error != 0) {
    return error;
  }
  const Answer known = kAnswers[type];
  if (known == nullptr) {
    return EIO;
  }
  response = (this->*known)(request);
  return 0;
}

FarEnd::Response FarEnd::counters(std::span<const uint8_t> /*request*/) {
  return managementCounters(insight_());
}

FarEnd::Response FarEnd::inventory(std::span<const uint8_t> /*request*/) {
  return remote_.inventory().response();
}

FarEnd::Response FarEnd::readMemory(std::span<const uint8_t> request) {
  const auto wanted = parseMemoryRequest(request, MGMT_OPCODE_READMEM);
  if (!wanted) {
    return refusal(request);
  }
  Response response = header(request, MGMT_OPCODE_READMEM | MGMT_OPCODE_RESPONSE);
  response.resize(MGMT_HEADER_SIZE + wanted->length);
  const int error = remote_.read(wanted->address, std::span(response).subspan(MGMT_HEADER_SIZE));
  return error == 0 ? response : refusal(request);
}

FarEnd::Response FarEnd::writeMemory(std::span<const uint8_t> request) {
  const auto wanted = parseMemoryRequest(request, MGMT_OPCODE_WRITEMEM);
  if (!wanted || remote_.write(wanted->address, request.subspan(MGMT_HEADER_SIZE)) != 0) {
    return refusal(request);
  }
  return header(request, MGMT_OPCODE_WRITEMEM | MGMT_OPCODE_RESPONSE);
}

FarEnd::Response FarEnd::pmdParameters(std::span<const uint8_t> /*request*/) {
  return pmdTestParameters(insight_());
}

FarEnd::Response FarEnd::pmdVector(std::span<const uint8_t> request) {
  return pmdVectorBlock(insight_(), request);
}

}  // namespace gfast::board
