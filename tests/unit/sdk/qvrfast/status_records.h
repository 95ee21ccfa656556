// What the tests of status and inventory share: chip bytes of counter blocks, and a far end's answers.
#pragma once

#include "unit/sdk/lines.h"

using namespace gfast;

// The record in the byte order of chip memory.
template <typename Record>
Bytes chipBytes(const Record& record) {
  Bytes bytes(sizeof record);
  for (size_t i = 0; i < sizeof record / 4; i++) {
    store_le32(&bytes[i * 4], wordOf(record, i));
  }
  return bytes;
}

// The blocks of a device's only line.
inline Script readsFramer(int device, const GFAST_FRAMER_RAW_COUNTERS_S& block) {
  return reads(device, 0xE2440000, chipBytes(block));
}
inline Script readsFdu(int device, const GFAST_FDU_RAW_COUNTERS_S& block) {
  return reads(device, 0xE2040000, chipBytes(block));
}
inline Script readsDerived(int device, const GFAST_DERIVED_COUNTERS_S& block) {
  return reads(device, 0xE2880000, chipBytes(block));
}
inline Script readsFramerInit(int device) {
  return reads(device, 0xE2400000, Bytes(sizeof(GFAST_FRAMER_INIT_COUNTERS_S), 0xEE));
}
inline Script readsEtrDatabase(int device, const ETR_DB_S& block) {
  return reads(device, 0xE5002000, chipBytes(block));
}

// The far end measures a margin of 8.2 dB, an attainable rate of 500000 kbit/s, a sent power of -7.5 dBm and
// an RMC margin of 9.1 dB.
constexpr uint16_t kFarEndMargin = 82;
constexpr uint32_t kFarEndAttainable = 500000;
constexpr int16_t kFarEndPower = -75;
constexpr uint16_t kFarEndRmcMargin = 91;

inline Script asksMeasurements(int device) {
  Bytes answer(14);
  store_le16(&answer[0], kFarEndMargin);
  store_le32(&answer[2], kFarEndAttainable);
  store_le16(&answer[6], static_cast<uint16_t>(kFarEndPower));
  store_le16(&answer[10], kFarEndRmcMargin);
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ, {}, 14, answer);
}

// A field of this size with the text, and zeros behind it.
inline Bytes field(const std::string& text, size_t size) {
  Bytes bytes(text.begin(), text.end());
  bytes.resize(size);
  return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// sInventoryDb, with the version bytes in memory order.
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
