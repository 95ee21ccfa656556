#include "qvrline/bit_loading.h"

#include <algorithm>
#include <array>

#include "chip/tones.h"
#include "qvrline/medley_set.h"
#include "qvrline/tone_memory.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kEntrySize = sizeof(uint16_t);

// As many as there are subcarriers, which is what an RMC area has room for.
using Entries = std::array<uint8_t, size_t{QVR_MAX_NUMBER_OF_TONES} * kEntrySize>;
static_assert(sizeof(Entries) == QVR_K_RMC_BLT_SIZE);

// The line, and the subcarriers that its chip sends or receives on.
QVR_retval_t findLoadedTones(QVR_lineId_t lineId, bool isTx, LineInShowtime* line, MedleySet* set) {
  if (QVR_deviceIdforLine(lineId) == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  if (const QVR_retval_t status = findLineInShowtime(lineId, line); QVR_STATUS_ERROR(status)) {
    return status;
  }
  const bool isUpstream = isTx != (line->descriptor.isDPsideLink == TRUE);
  return readMedleySet(line->descriptor, isUpstream, set);
}

// A pilot carries no data. An entry of a subcarrier outside the set does not count.
void decode(const Entries& entries, uint32_t count, const MedleySet& set, QVR_BLT_t table) {
  std::fill_n(table, QVR_MAX_NUMBER_OF_TONES, G9972_BITS_LOWEST);
  for (uint32_t i = 0; i < count; i++) {
    const uint16_t entry = load_le16(&entries[size_t{i} * kEntrySize]);
    const uint32_t tone = (entry & QVR_BLT_TONE_INDEX_MASK) >> QVR_BLT_TONE_INDEX_OFFSET;
    if (tone >= QVR_MAX_NUMBER_OF_TONES || set.contains[tone] != TRUE) {
      continue;
    }
    const uint16_t bits = entry & QVR_BLT_TONE_LOADIGN_MASK;
    table[tone] = bits == QVR_PILOT_BL ? G9972_BITS_LOWEST : bits;
  }
}

QVR_retval_t readIndex(const LineInShowtime& line, bool isTx, uint32_t* index) {
  uint8_t word[sizeof *index];
  const QVR_retval_t status =
      readTones(line, LineEnd::kNear, isTx ? VIRT_ADDR_TX_RMC_BLT_INDEX : VIRT_ADDR_RX_RMC_BLT_INDEX, word,
                sizeof word);
  *index = load_le32(word);
  return status;
}

QVR_retval_t readArea(const LineInShowtime& line, bool isTx, uint32_t index, Entries* entries) {
  const uint32_t link = line.descriptor.narrowLineID;
  const uint32_t area = index % 2;
  return QVR_readmem(line.descriptor.deviceId,
                     isTx ? VIRT_ADDR_TX_RMC_BLT(link, area) : VIRT_ADDR_RX_RMC_BLT(link, area),
                     entries->data(), QVR_K_RMC_BLT_SIZE);
}

// The chip may switch to the other area at any moment, and then writes into the one that is being read.
QVR_retval_t readSettledArea(const LineInShowtime& line, bool isTx, Entries* entries) {
  uint32_t index = 0;
  QVR_retval_t status = readIndex(line, isTx, &index);
  for (int reading = 0; QVR_STATUS_OK(status) && reading < MAX_RETRIES; reading++) {
    const uint32_t before = index;
    status = readArea(line, isTx, before, entries);
    if (QVR_STATUS_OK(status)) {
      status = readIndex(line, isTx, &index);
    }
    if (QVR_STATUS_OK(status) && index == before) {
      return status;
    }
  }
  return QVR_STATUS_OK(status) ? QVR_E_ERROR : status;
}

uint32_t lengthOfList(const Entries& entries) {
  uint32_t count = 0;
  while (count < QVR_MAX_NUMBER_OF_RMC_TONES &&
         load_le16(&entries[size_t{count} * kEntrySize]) != LAST_RMC_TONE_STAMP) {
    count++;
  }
  return count;
}

}  // namespace

QVR_retval_t gfast::QVR_readBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits, BOOL xi_isTx) {
  const bool isTx = xi_isTx == TRUE;
  LineInShowtime line{};
  MedleySet set;
  const QVR_retval_t status = findLoadedTones(xi_lineId, isTx, &line, &set);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  Entries entries;
  const QVR_retval_t read = readTones(line, LineEnd::kNear, isTx ? VIRT_ADDR_TX_BLT : VIRT_ADDR_RX_BLT,
                                      entries.data(), set.span() * kEntrySize);
  // When the loading cannot be read, the caller keeps the one before.
  if (QVR_STATUS_OK(read)) {
    decode(entries, set.span(), set, xo_bits);
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t gfast::QVR_readRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits, BOOL xi_isTx) {
  const bool isTx = xi_isTx == TRUE;
  LineInShowtime line{};
  MedleySet set;
  QVR_retval_t status = findLoadedTones(xi_lineId, isTx, &line, &set);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  Entries entries;
  status = readSettledArea(line, isTx, &entries);
  if (QVR_STATUS_OK(status)) {
    decode(entries, lengthOfList(entries), set, xo_bits);
  }
  return status;
}

QVR_retval_t QVR_readTxBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits) {
  return QVR_readBitLoadingTable(xi_lineId, xo_bits, TRUE);
}

QVR_retval_t QVR_readRxBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits) {
  return QVR_readBitLoadingTable(xi_lineId, xo_bits, FALSE);
}

QVR_retval_t QVR_readTxRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits) {
  return QVR_readRMCBitLoadingTable(xi_lineId, xo_bits, TRUE);
}

QVR_retval_t QVR_readRxRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits) {
  return QVR_readRMCBitLoadingTable(xi_lineId, xo_bits, FALSE);
}
