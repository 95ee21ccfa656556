#include "driver/trace_blanks.h"

#include <algorithm>
#include <span>

#include "chip/far_end_messages.h"
#include "chip/inventory_records.h"
#include "chip/registers.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

using WritableBytes = std::span<uint8_t>;

constexpr uint32_t kMacLength = 6;
constexpr uint32_t kSerialLength = 32;
constexpr uint32_t kLinesInInventory = 16;  // as many as the address has room for
constexpr uint8_t kBlankCharacter = 'X';

// An address of zeros prints as one.
void blankMac(uint8_t& byte) {
  byte = 0;
}

// What is not there stays not there, and a text keeps its length.
void blankText(uint8_t& byte) {
  byte = byte == 0 ? 0 : kBlankCharacter;
}

// Blanks those of `bytes`, which lie at `address`, that lie in the secret's place. Places do not wrap.
void blankOverlap(uint32_t address, WritableBytes bytes, uint32_t secret, uint32_t length,
                  void (*blank)(uint8_t&)) {
  for (size_t i = 0; i < bytes.size(); i++) {
    const uint64_t place = uint64_t{address} + i;
    if (place >= secret && place < uint64_t{secret} + length) {
      blank(bytes[i]);
    }
  }
}

void blankMemory(uint32_t address, WritableBytes bytes) {
  blankOverlap(address, bytes, VIRT_ADDR_B0_REGS + B0_REGS_MAC_ADDRESS, kMacLength, blankMac);
  for (uint32_t line = 0; line < kLinesInInventory; line++) {
    const uint32_t area = VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(line);
    blankOverlap(address, bytes, area + INVENTORY_DB_SYSTEM_SERIAL, kSerialLength, blankText);
    blankOverlap(address, bytes, area + INVENTORY_DB_SIZE + INVENTORY_RESPONSE_SERIAL_NUMBER, kSerialLength,
                 blankText);
  }
}

// Far-end memory stands behind the header of the message that asks for it or brings it.
void blankFarEndMemory(std::span<const uint8_t> header, WritableBytes message) {
  if (header.size() >= MGMT_HEADER_SIZE && message.size() > MGMT_HEADER_SIZE) {
    blankMemory(load_le32(&header[MGMT_HEADER_ADDRESS]), message.subspan(MGMT_HEADER_SIZE));
  }
}

bool movesFarEndMemory(const TraceRequest& request) {
  return request.kind == TraceKind::kFarEnd && (request.numbers[1] == MGMT_FAR_END_REQ_TYPE_READMEM ||
                                                request.numbers[1] == MGMT_FAR_END_REQ_TYPE_WRITEMEM);
}

bool asksForInventory(const TraceRequest& request) {
  return request.kind == TraceKind::kFarEnd && request.numbers[1] == MGMT_FAR_END_REQ_TYPE_INVENTORY;
}

}  // namespace

void gfast::blankRequest(TraceRequest& request) {
  if (request.kind == TraceKind::kMemWrite) {
    blankMemory(request.numbers[0], request.sent);
  } else if (movesFarEndMemory(request)) {
    blankFarEndMemory(request.sent, request.sent);
  }
}

void gfast::blankAnswer(const TraceRequest& request, TraceAnswer& answer) {
  if (request.kind == TraceKind::kMemRead) {
    blankMemory(request.numbers[0], answer.returned);
  } else if (asksForInventory(request)) {
    blankOverlap(0, answer.returned, INVENTORY_RESPONSE_SERIAL_NUMBER, kSerialLength, blankText);
  } else if (movesFarEndMemory(request)) {
    blankFarEndMemory(request.sent, answer.returned);
  }
}
