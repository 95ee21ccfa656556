// Memory of the modem at the far end, read over the line's embedded operations channel, a piece an exchange.

#include <qvr.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include "chip/far_end_messages.h"
#include "qvrassert/qvrassert.h"
#include "qvrline/eoc.h"
#include "qvrline/line_table.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

using Message = std::array<uint8_t, MGMT_HEADER_SIZE + MGMT_MAX_DATA>;

constinit std::atomic<uint16_t> sequence_number{0};

struct Piece {
  uint32_t address;
  uint32_t length;
  uint16_t sequence;
};

void writeRequest(Message& message, const Piece& piece) {
  store_le16(&message[MGMT_HEADER_OPCODE], MGMT_OPCODE_READMEM);
  store_le16(&message[MGMT_HEADER_LEN], static_cast<uint16_t>(piece.length));
  store_le16(&message[MGMT_HEADER_SN], piece.sequence);
  store_le32(&message[MGMT_HEADER_ADDRESS], piece.address);
}

// Whether the response is the whole piece that was asked for: a far end may send anything. A far end that
// refuses may not have understood the request, so the other fields of its header are ignored.
QVR_retval_t judgeResponse(const Message& message, uint32_t received, const Piece& piece) {
  if (received < MGMT_HEADER_SIZE) {
    return QVR_E_FAILED_GETTING_FE_DATA;
  }
  const uint16_t opcode = load_le16(&message[MGMT_HEADER_OPCODE]);
  if (opcode == MGMT_OPCODE_NACK) {
    return QVR_E_FAREND_EOC_NACK;
  }
  const bool expected = opcode == (MGMT_OPCODE_READMEM | MGMT_OPCODE_RESPONSE) &&
                        load_le16(&message[MGMT_HEADER_LEN]) == piece.length &&
                        load_le16(&message[MGMT_HEADER_SN]) == piece.sequence &&
                        load_le32(&message[MGMT_HEADER_ADDRESS]) == piece.address &&
                        received == MGMT_HEADER_SIZE + piece.length;
  return expected ? QVR_E_STATUS_OK : QVR_E_FAILED_GETTING_FE_DATA;
}

QVR_retval_t readPiece(QVR_lineId_t lineId, const Piece& piece, uint8_t* bytes) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(lineId);
  Message message{};
  writeRequest(message, piece);
  uint32_t received = 0;
  QVR_retval_t status = QVR_E_STATUS_OK;
  {
    const EocExchange exchange(lineId);
    status = QVR_sendMsgToFarEnd(line.deviceId, static_cast<uint16_t>(line.narrowLineID),
                                 MGMT_FAR_END_REQ_TYPE_READMEM, message.data(), MGMT_HEADER_SIZE,
                                 static_cast<uint32_t>(MGMT_HEADER_SIZE + piece.length), &received);
  }
  if (QVR_STATUS_OK(status)) {
    status = judgeResponse(message, received, piece);
  }
  if (QVR_STATUS_OK(status)) {
    std::memcpy(bytes, &message[MGMT_HEADER_SIZE], piece.length);
  }
  return status;
}

}  // namespace

QVR_retval_t QVR_readmemFarEnd(QVR_lineId_t xi_lineId, uint32_t xi_address, void* xo_buffer,
                               uint32_t xi_numBytes) {
  requireLine(xi_lineId);
  if (xi_numBytes > QVR_K_MAX_FAR_END_READ) {
    DoAssert(QVR_K_ASSERT_LINE, kLineLayer, __LINE__, "Response message too large", 0);
  }
  auto* bytes = static_cast<uint8_t*>(xo_buffer);
  for (uint32_t done = 0; done < xi_numBytes;) {
    const uint32_t length = std::min<uint32_t>(xi_numBytes - done, MGMT_MAX_DATA);
    const QVR_retval_t status =
        readPiece(xi_lineId, {xi_address + done, length, ++sequence_number}, bytes + done);
    if (QVR_STATUS_ERROR(status)) {
      return status;
    }
    done += length;
  }
  return QVR_E_STATUS_OK;
}
