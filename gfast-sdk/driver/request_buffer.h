// What each kind of request does with the buffer that its envelope names.
#pragma once

#include <gfast_api.h>

namespace gfast {

struct RequestBuffer {
  char** field = nullptr;  // the envelope's address of the buffer; null: there is no buffer
  uint32_t size = 0;
  uint32_t sent = 0;             // bytes that the driver reads
  uint32_t* copied = nullptr;    // the envelope's count of bytes that the driver filled; null: it fills none
  uint32_t* received = nullptr;  // the envelope's count of bytes that the chip returned; may be null
};

inline RequestBuffer requestBuffer(uint32_t code, gfast_iocreq& envelope) {
  auto& u = envelope.req_u;
  switch (code) {
    case DFEIOCMEMRD:
      return {&u.memread.buf, u.memread.bufsize, 0, &u.memread.datalen_copied_to_user,
              &u.memread.datalen_rcvd_from_hw};
    case DFEIOCFLASHRD:
      return {&u.flashread.buf, u.flashread.bufsize, 0, &u.flashread.datalen_copied_to_user,
              &u.flashread.datalen_rcvd_from_hw};
    case DFEIOCMEMWR:
      return {&u.memwrite.buf, u.memwrite.bufsize, u.memwrite.hw_mem_len};
    case DFEIOCLOGCFG:
      return {&u.logcfg.buf, u.logcfg.bufsize, u.logcfg.bufsize};
    case DFEIOCLOGRD:
    case DFEIOCALMRD:
      return {&u.logalm_read.buf, u.logalm_read.bufsize, 0, &u.logalm_read.datalen_copied_to_user,
              &u.logalm_read.datalen_rcvd_from_hw};
    case DFEIOCFARENDMSG:
      return {&u.farendmsg.buf, u.farendmsg.bufsize, u.farendmsg.outmsg_datalen,
              &u.farendmsg.datalen_copied_to_user};
    default:
      return {};
  }
}

}  // namespace gfast
