// The driver's requests: how the board describes and serves each.
#pragma once

#include <gfast_api.h>

#include <cstdint>

#include "virtual-board/base/host_file.h"
#include "virtual-board/board/far_end.h"
#include "virtual-board/board/request_kind.h"
#include "virtual-board/chip/chip.h"
#include "virtual-board/line/copper_line.h"

namespace gfast::board {

// A request while the board serves it.
struct Exchange {
  int device;
  Chip& chip;
  FarEnd& farEnd;
  const CopperLine& line;
  gfast_iocreq& request;
  HostFile image;       // of a request that names a file
  uint32_t where = 0;   // address or line, for trace and faults
  uint32_t length = 0;  // in bytes, for trace and faults
};

struct RequestHandler {
  uint32_t code;
  RequestKind kind;
  // Returns 0 or an errno.
  int (*serve)(Exchange&);
  // Fills image, where and length before the request is served; may be null.
  void (*describe)(Exchange&);
};

// Null: no such request.
const RequestHandler* requestHandler(uint32_t code);

}  // namespace gfast::board
