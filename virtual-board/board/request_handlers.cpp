#include "virtual-board/board/request_handlers.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "chip/flash_layout.h"

namespace gfast::board {

namespace {

// 0, or the errno of a buffer that cannot hold `length` bytes.
int checkBuffer(const char* buffer, uint32_t size, uint32_t length, uint32_t most) {
  if (length > most || size < length) {
    return EINVAL;
  }
  return buffer == nullptr && length > 0 ? EFAULT : 0;
}

// Tells the host how many bytes the chip returned, and how many are in the host's buffer.
template <typename Read>
void setCopied(Read& read, size_t length) {
  read.datalen_rcvd_from_hw = static_cast<uint32_t>(length);
  read.datalen_copied_to_user = static_cast<uint32_t>(length);
}

std::span<uint8_t> bytesOf(char* buffer, size_t length) {
  return {reinterpret_cast<uint8_t*>(buffer), length};
}

int memRead(Exchange& exchange) {
  auto& read = exchange.request.req_u.memread;
  setCopied(read, 0);
  if (const int wrong = checkBuffer(read.buf, read.bufsize, read.hw_mem_len, IOCTL_MAX_READ_BYTES);
      wrong != 0) {
    return wrong;
  }
  if (!inAddressSpace(read.hw_mem_addr, read.hw_mem_len)) {
    return EINVAL;
  }
  const int error = exchange.chip.read(read.hw_mem_addr, bytesOf(read.buf, read.hw_mem_len));
  if (error == 0) {
    setCopied(read, read.hw_mem_len);
  }
  return error;
}

int memWrite(Exchange& exchange) {
  const auto& write = exchange.request.req_u.memwrite;
  if (const int wrong = checkBuffer(write.buf, write.bufsize, write.hw_mem_len, IOCTL_MAX_WRITE_BYTES);
      wrong != 0) {
    return wrong;
  }
  if (!inAddressSpace(write.hw_mem_addr, write.hw_mem_len)) {
    return EINVAL;
  }
  return exchange.chip.write(write.hw_mem_addr, bytesOf(write.buf, write.hw_mem_len));
}

int activate(Exchange& exchange) {
  return exchange.chip.activate(exchange.request.req_u.activate.hw_mem_addr);
}

int imgDnld(Exchange& exchange) {
  return exchange.image.error != 0 ? exchange.image.error : exchange.chip.download(exchange.image.bytes);
}

int flashErase(Exchange& exchange) {
  const auto& erase = exchange.request.req_u.flasherase;
  return exchange.chip.eraseFlash(erase.erasetype, erase.hw_flash_addr);
}

int flashProg(Exchange& exchange) {
  return exchange.image.error != 0
             ? exchange.image.error
             : exchange.chip.programFlash(exchange.request.req_u.flashprog.hw_flash_addr,
                                          exchange.image.bytes);
}

int flashRead(Exchange& exchange) {
  auto& read = exchange.request.req_u.flashread;
  setCopied(read, 0);
  if (const int wrong = checkBuffer(read.buf, read.bufsize, read.hw_flash_len, IOCTL_MAX_READ_BYTES);
      wrong != 0) {
    return wrong;
  }
  const int error = exchange.chip.readFlash(read.hw_flash_addr, bytesOf(read.buf, read.hw_flash_len));
  if (error == 0) {
    setCopied(read, read.hw_flash_len);
  }
  return error;
}

int logCfg(Exchange& exchange) {
  const auto& config = exchange.request.req_u.logcfg;
  if (config.bufsize != GFAST_LOGCFG_BODY_SIZE) {
    return EINVAL;
  }
  if (config.buf == nullptr) {
    return EFAULT;
  }
  if (exchange.chip.hung()) {
    return ETIMEDOUT;
  }
  exchange.chip.pending().enableLogs();
  return 0;
}

// While a chip hangs, it returns no records.
int takeRecords(Exchange& exchange, bool (PendingRecords::*take)(std::span<uint8_t> out, size_t& length)) {
  auto& read = exchange.request.req_u.logalm_read;
  setCopied(read, 0);
  if (read.buf == nullptr) {
    return EFAULT;
  }
  if (exchange.chip.hung()) {
    return 0;
  }
  size_t length = 0;
  if (!(exchange.chip.pending().*take)(bytesOf(read.buf, read.bufsize), length)) {
    return EMSGSIZE;
  }
  setCopied(read, length);
  exchange.length = static_cast<uint32_t>(length);
  return 0;
}

int logRead(Exchange& exchange) {
  return takeRecords(exchange, &PendingRecords::takeLogs);
}

int eventRead(Exchange& exchange) {
  return takeRecords(exchange, &PendingRecords::takeEvent);
}

int farEnd(Exchange& exchange) {
  auto& message = exchange.request.req_u.farendmsg;
  message.datalen_copied_to_user = 0;
  constexpr uint32_t largestMessage = 65536;
  if (message.port_idx != 0 || message.bufsize > largestMessage) {
    return EINVAL;
  }
  if (const int wrong = checkBuffer(message.buf, message.bufsize, message.outmsg_datalen, largestMessage);
      wrong != 0) {
    return wrong;
  }
  if (const int unreachable = exchange.chip.unreachable(); unreachable != 0) {
    return unreachable;
  }
  if (!exchange.line.inShowtime()) {
    return ENOTCONN;
  }
  std::vector<uint8_t> response;
  const std::span<const uint8_t> request = bytesOf(message.buf, message.outmsg_datalen);
  const int error = exchange.farEnd.answer(message.farend_msg_req_type, request, response);
  if (error != 0) {
    return error;
  }
  const auto length = static_cast<uint32_t>(std::min<size_t>(response.size(), message.bufsize));
  if (length > 0 && message.buf == nullptr) {
    return EFAULT;
  }
  std::copy_n(response.begin(), length, bytesOf(message.buf, length).begin());
  message.datalen_copied_to_user = length;
  return 0;
}

int notServed(Exchange& /*exchange*/) {
  return EOPNOTSUPP;
}

constexpr RequestHandler kHandlers[] = {
    {DFEIOCMEMRD, RequestKind::kMemRead, memRead,
     [](Exchange& e) {
       e.where = e.request.req_u.memread.hw_mem_addr;
       e.length = e.request.req_u.memread.hw_mem_len;
     }},
    {DFEIOCMEMWR, RequestKind::kMemWrite, memWrite,
     [](Exchange& e) {
       e.where = e.request.req_u.memwrite.hw_mem_addr;
       e.length = e.request.req_u.memwrite.hw_mem_len;
     }},
    {DFEIOCIMGACT, RequestKind::kActivate, activate,
     [](Exchange& e) { e.where = e.request.req_u.activate.hw_mem_addr; }},
    {DFEIOCIMGDNLD, RequestKind::kImgDnld, imgDnld,
     [](Exchange& e) {
       e.image = readHostFile(e.request.req_u.imgdnld.fw_filename, FLASH_SIZE);
       e.length = static_cast<uint32_t>(e.image.bytes.size());
     }},
    {DFEIOCFLASHRD, RequestKind::kFlashRead, flashRead,
     [](Exchange& e) {
       e.where = e.request.req_u.flashread.hw_flash_addr;
       e.length = e.request.req_u.flashread.hw_flash_len;
     }},
    {DFEIOCFLASHERASE, RequestKind::kFlashErase, flashErase,
     [](Exchange& e) { e.where = e.request.req_u.flasherase.hw_flash_addr; }},
    {DFEIOCFLASHPROG, RequestKind::kFlashProg, flashProg,
     [](Exchange& e) {
       e.image = readHostFile(e.request.req_u.flashprog.fw_filename, FLASH_SIZE);
       e.where = e.request.req_u.flashprog.hw_flash_addr;
       e.length = static_cast<uint32_t>(e.image.bytes.size());
     }},
    {DFEIOCOAMGET, RequestKind::kUnknown, notServed, nullptr},
    {DFEIOCOAMSET, RequestKind::kUnknown, notServed, nullptr},
    {DFEIOCLOGCFG, RequestKind::kLogCfg, logCfg, nullptr},
    {DFEIOCLOGRD, RequestKind::kLogRead, logRead, nullptr},
    {DFEIOCALMRD, RequestKind::kEventRead, eventRead, nullptr},
    {DFEIOCSETPORTTAG, RequestKind::kUnknown, notServed, nullptr},
    {DFEIOCGETRESULT, RequestKind::kUnknown, notServed, nullptr},
    {DFEIOCDEVINFO, RequestKind::kUnknown, notServed, nullptr},
    {DFEIOCFARENDMSG, RequestKind::kFarEnd, farEnd,
     [](Exchange& e) {
       e.where = e.request.req_u.farendmsg.port_idx;
       e.length = e.request.req_u.farendmsg.outmsg_datalen;
     }},
};

}  // namespace

const RequestHandler* requestHandler(uint32_t code) {
  const auto* found = std::find_if(std::begin(kHandlers), std::end(kHandlers),
                                   [code](const RequestHandler& handler) { return handler.code == code; });
  return found == std::end(kHandlers) ? nullptr : found;
}

}  // namespace gfast::board
