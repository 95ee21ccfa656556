#include "qvrline/medley_set.h"

#include <algorithm>

#include "chip/tones.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

void decode(const uint8_t* record, QVR_medleyset_t* set) {
  const uint8_t* next = record;
  const auto take = [&next] {
    const uint16_t value = load_le16(next);
    next += sizeof value;
    return value;
  };
  for (QVR_band_t& band : set->bands) {
    band.firstSubCarrier = take();
    band.lastSubCarrier = take();
  }
  set->numBands = take();
  set->numSubCarriers = take();
}

// False when the band leaves the grid; its part on the grid is marked anyway.
bool markBand(const QVR_band_t& band, QVR_medleySetLUT_t table) {
  for (uint32_t tone = band.firstSubCarrier; tone <= band.lastSubCarrier; tone++) {
    if (tone >= QVR_MAX_NUMBER_OF_TONES) {
      return false;
    }
    table[tone] = TRUE;
  }
  return true;
}

}  // namespace

QVR_retval_t gfast::QVR_getMedleySetLUT(const QVR_lineDescriptor_t& xi_line, BOOL xi_isUpstream,
                                        QVR_medleyset_t* xo_set, QVR_medleySetLUT_t xo_table) {
  const bool transmitted = (xi_isUpstream == TRUE) != (xi_line.isDPsideLink == TRUE);
  const uint32_t address = transmitted ? VIRT_ADDR_MEDLEY_SET_US(xi_line.narrowLineID)
                                       : VIRT_ADDR_MEDLEY_SET_DS(xi_line.narrowLineID);
  uint8_t record[QVR_K_MEDLEY_SET_SIZE];
  const QVR_retval_t status = QVR_readmem(xi_line.deviceId, address, record, sizeof record);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  decode(record, xo_set);
  if (xo_set->numBands >= MAX_NUM_BANDS_IN_MEDLEY_SET) {
    return QVR_E_ERROR;
  }
  std::fill_n(xo_table, QVR_MAX_NUMBER_OF_TONES, BOOL{FALSE});
  const bool onGrid = std::all_of(xo_set->bands, xo_set->bands + xo_set->numBands,
                                  [&](const QVR_band_t& band) { return markBand(band, xo_table); });
  return onGrid ? QVR_E_STATUS_OK : QVR_E_ERROR;
}

uint32_t gfast::QVR_findLowestSubcarrierInMedleySet(const QVR_medleySetLUT_t xi_table, uint32_t xi_size) {
  return static_cast<uint32_t>(std::find(xi_table, xi_table + xi_size, TRUE) - xi_table);
}

uint32_t gfast::QVR_findHighestSubcarrierInMedleySet(const QVR_medleySetLUT_t xi_table, uint32_t xi_size) {
  uint32_t tone = xi_size;
  while (tone > 0 && xi_table[tone - 1] != TRUE) {
    tone--;
  }
  return tone == 0 ? 0 : tone - 1;
}

QVR_retval_t gfast::readMedleySet(const QVR_lineDescriptor_t& line, bool isUpstream, MedleySet* set) {
  QVR_medleyset_t record;
  const QVR_retval_t status = QVR_getMedleySetLUT(line, isUpstream ? TRUE : FALSE, &record, set->contains);
  if (QVR_STATUS_OK(status)) {
    set->lowest = QVR_findLowestSubcarrierInMedleySet(set->contains, QVR_MAX_NUMBER_OF_TONES);
    set->highest = QVR_findHighestSubcarrierInMedleySet(set->contains, QVR_MAX_NUMBER_OF_TONES);
  }
  return status;
}

QVR_retval_t QVR_getMedleySet(QVR_lineId_t xi_lineId, BOOL xi_isTx, QVR_medleyset_t* xo_set) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (line.deviceId == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  const bool isUpstream = (xi_isTx == TRUE) != (line.isDPsideLink == TRUE);
  QVR_medleySetLUT_t table;
  return QVR_getMedleySetLUT(line, isUpstream ? TRUE : FALSE, xo_set, table);
}
