// The driver's requests, one by one: what each is about, and how the board serves it.
#pragma once

#include <gfast_api.h>

#include <cstdint>

#include "virtual-board/base/host_file.h"
#include "virtual-board/board/far_end.h"
#include "virtual-board/board/request_kind.h"
#include "virtual-board/chip/chip.h"
#include "virtual-board/line/copper_line.h"

namespace gfast::board {

// A request on its way through the board.
struct Exchange {
  int device;
  Chip& chip;
  FarEnd& farEnd;
  const CopperLine& line;
  gfast_iocreq& request;
  HostFile image;       // of requests that name a file
  uint32_t where = 0;   // as traced and as faults match it
  uint32_t length = 0;  // likewise
};

struct RequestHandler {
  uint32_t code;
  RequestKind kind;
  // 0 or an errno.
  int (*serve)(Exchange&);
  // Notes what the request is about, before anything is done; none: nothing to note.
  void (*describe)(Exchange&);
};

// None: no such request.
const RequestHandler* requestHandler(uint32_t code);

}  // namespace gfast::board
