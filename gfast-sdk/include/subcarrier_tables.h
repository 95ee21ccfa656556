// What is known of a line subcarrier by subcarrier, and the encodings of ITU-T G.997.2.
#pragma once

#include <cstdint>

#include "qvr_bool.h"

// Subcarriers of a 106 MHz profile (ITU-T G.9701), 51.75 kHz apart.
constexpr uint32_t G9701_106a_MAX_NUMBER_OF_SUBCARRIERS = 2048;
constexpr uint32_t QVR_MAX_NUMBER_OF_TONES = G9701_106a_MAX_NUMBER_OF_SUBCARRIERS;
constexpr double QVR_K_SUBCARRIER_SPACING_MHZ = 0.05175;

// Subcarriers from first to last, both included.
struct QVR_band_t {
  uint16_t firstSubCarrier;
  uint16_t lastSubCarrier;
};

constexpr uint32_t MAX_NUM_BANDS_IN_MEDLEY_SET = 32;
// The subcarriers that carry a direction's signal.
struct QVR_medleyset_t {
  QVR_band_t bands[MAX_NUM_BANDS_IN_MEDLEY_SET];
  uint16_t numBands;
  uint16_t numSubCarriers;
};
constexpr uint32_t QVR_K_MEDLEY_SET_SIZE = 132;  // bytes in chip memory, fields in the order above

using QVR_medleySetLUT_t = BOOL[QVR_MAX_NUMBER_OF_TONES];  // TRUE: the subcarrier is in the set

constexpr int32_t G9972_BITS_LOWEST = 0;
constexpr int32_t G9972_BITS_HIGHEST = 14;
using QVR_BLT_t = int32_t[QVR_MAX_NUMBER_OF_TONES];  // bits of each subcarrier

using QVR_SNR_t = float;  // dB
using QVR_SNRTBL_t = QVR_SNR_t[QVR_MAX_NUMBER_OF_TONES];
using QVR_FEQ_t = double[QVR_MAX_NUMBER_OF_TONES];

// Analogue front end.
struct QVR_AFE_PARAMS_t {
  double rxGain;      // dB
  uint32_t aceOnOff;  // 1: the analogue canceller of echo is on
};

struct QVR_linePhyParams_t {
  uint32_t firstTone;  // first processed subcarrier
  uint32_t numProcessedTones;
};

using G9972_BITSps_t = uint8_t[QVR_MAX_NUMBER_OF_TONES];

// SNR in dB = value / 2 - 32.
using G9972_SNRps_t = uint8_t[QVR_MAX_NUMBER_OF_TONES];
constexpr uint8_t G9972_SNR_NO_VALUE = 255;

// Active line noise in dBm/Hz = -33 - value / 2.
using G9972_ALNps_t = uint8_t[QVR_MAX_NUMBER_OF_TONES];
constexpr uint8_t G9972_ALN_NO_VALUE = 255;

// Magnitude of the channel in dB = 6 - value / 10.
using G9972_HLOGps_t = int16_t[QVR_MAX_NUMBER_OF_TONES];
constexpr int16_t G9972_HLOG_NO_VALUE = 1023;

using G9972_SATN_t = int16_t;  // signal attenuation, 0.1 dB

// Vectoring coefficients between the lines of a cable.
constexpr uint32_t COEF_NUM_USERS = 16;
struct QVR_realMatrix_t {
  double matrix[COEF_NUM_USERS][COEF_NUM_USERS];
};
// Of one pair of subcarriers.
struct QVR_tonePairMatrix_t {
  QVR_realMatrix_t coefficients_re;
  QVR_realMatrix_t coefficients_im;
};
using QVR_cancelerMatrix_t = QVR_tonePairMatrix_t*;  // one element a pair of subcarriers
