// What noise does to the units of one direction.
#pragma once

#include "virtual-board/line/line_fault.h"
#include "virtual-board/line/line_spectrum.h"

namespace gfast::board {

struct ErrorRates {
  double corrupted = 0;  // share of the units that are sent; 0: the few of a healthy line
  double lost = 0;       // of those, the share that retransmission does not save
  bool rmcLost = false;
  bool announced =
      false;  // of a board file: the receiver asks for a fast adaptation each severely errored second

  // Independent errors of another cause come in addition.
  void add(const ErrorRates& other);
  bool operator==(const ErrorRates&) const = default;
};

// From this share of errors on, the robust management channel is lost too.
constexpr double kRmcLost = 0.5;

// Of a burst that a board file gives as a share.
ErrorRates burstErrors(double share);

// The share of units that noise corrupts while it lasts: that of uncoded symbols in which a subcarrier with
// too little margin is wrong.
double corruptedShare(const LineSpectrum& spectrum, const ToneLoading& loading, const DtuFraming& dtu);

// Noise that lasts.
ErrorRates lastingErrors(const LineSpectrum& spectrum, const ToneLoading& loading, const DtuFraming& dtu,
                         int32_t rmcMargin);

// Impulses, of which one corrupts this share of the units that it meets.
ErrorRates impulseErrors(const LineFault& impulse, double corrupted);

}  // namespace gfast::board
