// The inventory of both ends of a line: the area in chip memory, and the far end's own answer.
#pragma once

#include "support/driver_script.h"

using namespace gfast;

// sInventoryDb; the version bytes as they lie in memory.
struct LocalInventory {
  Bytes ghsVendor = field("GHSLOCAL", 8);
  Bytes version{106, 4, 9, 1};
  Bytes systemVendor = field("SYSLOCAL", 8);
  Bytes serial = field("local serial", 32);
  Bytes ftuVendor = field("GHSOTHER", 8);

  Bytes bytes() const { return ghsVendor + version + systemVendor + serial + ftuVendor; }
};

// INVENTORY_RESPONSE_S.
struct FarEndInventory {
  Bytes vendor = field("SYSOTHER", 8);
  Bytes version = field("7.1.4 rel", 16);
  Bytes serial = field("0123456789abcdef0123456789ABCDEF", 32);

  Bytes bytes() const { return vendor + version + serial; }
};

inline Script readsInventory(int device, const LocalInventory& local, const FarEndInventory& farEnd = {}) {
  return reads(device, 0xF1000000, local.bytes() + farEnd.bytes());
}

inline Script asksInventory(int device, const FarEndInventory& farEnd = {}) {
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_INVENTORY, {}, 56, farEnd.bytes());
}
