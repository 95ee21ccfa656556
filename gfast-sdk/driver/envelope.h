// The empty request envelope that every request starts from.
#pragma once

#include <gfast_api.h>

#include <cstring>

namespace gfast {

// Zero in every byte, those between the fields and behind the smaller records included: the driver may read
// any of them.
inline gfast_iocreq emptyRequest() {
  gfast_iocreq request;
  std::memset(&request, 0, sizeof request);
  return request;
}

}  // namespace gfast
