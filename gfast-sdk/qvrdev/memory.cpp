// Chip memory, in pieces that the driver takes.
#include <qvr.h>

#include <algorithm>

#include "driver/driver.h"
#include "driver/envelope.h"
#include "qvrdev/requests.h"
#include "qvrdev/require.h"

using namespace gfast;

namespace {

bool readPiece(int descriptor, uint32_t address, char* bytes, uint32_t length) {
  gfast_iocreq request = emptyRequest();
  request.req_u.memread.hw_mem_addr = address;
  request.req_u.memread.hw_mem_len = static_cast<uint16_t>(length);
  request.req_u.memread.buf = bytes;
  request.req_u.memread.bufsize = length;
  return driver().request(descriptor, DFEIOCMEMRD, request) != kRequestFailed;
}

bool writePiece(int descriptor, uint32_t address, char* bytes, uint32_t length) {
  gfast_iocreq request = emptyRequest();
  request.req_u.memwrite.hw_mem_addr = address;
  request.req_u.memwrite.hw_mem_len = static_cast<uint16_t>(length);
  request.req_u.memwrite.buf = bytes;
  request.req_u.memwrite.bufsize = length;
  return driver().request(descriptor, DFEIOCMEMWR, request) != kRequestFailed;
}

// One kind of access: its request, its longest piece, its failure code.
struct Access {
  bool (*piece)(int descriptor, uint32_t address, char* bytes, uint32_t length);
  uint32_t mostBytes;
  QVR_retval_t failure;
};

constexpr Access kRead{readPiece, IOCTL_MAX_READ_BYTES, QVR_E_MEMREAD_ERROR};
constexpr Access kWrite{writePiece, IOCTL_MAX_WRITE_BYTES, QVR_E_MEMWRITE_ERROR};

// A transfer of zero bytes makes one request too: it tells whether the chip answers.
QVR_retval_t transfer(const Access& access, QVR_deviceId_t device, uint32_t address, char* bytes,
                      uint32_t left) {
  const int descriptor = QVR_deviceHandle(device);
  if (descriptor < 0) {
    return QVR_E_DEVICE_NOT_EXISTS;
  }
  do {
    const uint32_t length = std::min(left, access.mostBytes);
    if (!access.piece(descriptor, address, bytes, length)) {
      return access.failure;
    }
    address += length;
    bytes += length;
    left -= length;
  } while (left > 0);
  return QVR_E_STATUS_OK;
}

}  // namespace

QVR_retval_t QVR_readmem(QVR_deviceId_t xi_deviceId, uint32_t xi_address, void* xo_buffer,
                         uint32_t xi_numBytes) {
  requireDevice(xi_deviceId, kUnknownDeviceHandle);
  requireEvenLength(xi_numBytes);
  return transfer(kRead, xi_deviceId, xi_address, static_cast<char*>(xo_buffer), xi_numBytes);
}

QVR_retval_t QVR_writemem(QVR_deviceId_t xi_deviceId, uint32_t xi_address, const void* xi_buffer,
                          uint32_t xi_numBytes) {
  requireDevice(xi_deviceId, kUnknownDeviceHandle);
  requireEvenLength(xi_numBytes);
  // The record has one pointer for both directions; a write only reads through it.
  char* bytes = const_cast<char*>(static_cast<const char*>(xi_buffer));
  return transfer(kWrite, xi_deviceId, xi_address, bytes, xi_numBytes);
}
