// The medley sets of a line: the subcarriers that carry its signal (ITU-T G.9701).
#pragma once

#include <qvr.h>

#include "qvrline/line_table.h"

namespace gfast {

// Reads a set from the near end and spreads it out by subcarrier: the one the chip transmits on (type 1) when
// xi_isUpstream differs from the line's isDPsideLink, the one it receives on (type 0) when they are the same.
//   QVR_E_ERROR  32 bands or more; a subcarrier past the grid, with those up to there already spread out
//   otherwise as QVR_readmem; nothing is filled then
QVR_retval_t QVR_getMedleySetLUT(const QVR_lineDescriptor_t& xi_line, BOOL xi_isUpstream,
                                 QVR_medleyset_t* xo_set, QVR_medleySetLUT_t xo_table);

// The lowest subcarrier of the set, or xi_size when it is empty; the highest, or 0 when it is empty.
uint32_t QVR_findLowestSubcarrierInMedleySet(const QVR_medleySetLUT_t xi_table, uint32_t xi_size);
uint32_t QVR_findHighestSubcarrierInMedleySet(const QVR_medleySetLUT_t xi_table, uint32_t xi_size);

// A set as its users need it.
struct MedleySet {
  QVR_medleySetLUT_t contains;
  uint32_t lowest;
  uint32_t highest;

  // Subcarriers from the lowest to the highest, both included; 0 of an empty set.
  uint32_t span() const { return lowest > highest ? 0 : highest - lowest + 1; }
};

//   as QVR_getMedleySetLUT
QVR_retval_t readMedleySet(const QVR_lineDescriptor_t& line, bool isUpstream, MedleySet* set);

}  // namespace gfast
