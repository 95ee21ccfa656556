// Calibration of the receive path: from what the equaliser says to the level on the line.
#pragma once

#include <cstdint>

namespace gfast {

// What the receive path takes from each subcarrier, in dB to be added to what the equaliser says: a front end
// loses little at the bottom of the band and rolls off towards its upper end; with the analogue canceller in
// the path, a little more. Fitted as fixed + slope * f + curve * f * f, f being the subcarrier's frequency as
// a share of 106 MHz.
struct ReceivePathCurve {
  double fixed_db;
  double slope_db;
  double curve_db;
};
constexpr ReceivePathCurve kReceivePathAceOn = {1.10, -0.40, 3.60};
constexpr ReceivePathCurve kReceivePathAceOff = {0.25, -0.15, 2.30};
constexpr double calibration_db(const ReceivePathCurve& path, uint32_t subcarrier) {
  const double f = subcarrier * 0.05175 / 106.0;
  return path.fixed_db + path.slope_db * f + path.curve_db * f * f;
}
// The receive level in dBm/Hz = -10 * log10(|coefficient|^2) + calibration - gain + the path's constant.
constexpr double CALIBRATION_FACTOR_ACE_ON = -55.47;
constexpr double CALIBRATION_FACTOR_ACE_OFF = -35.72;

}  // namespace gfast
