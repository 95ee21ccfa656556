// What is known of a line subcarrier by subcarrier, and the encodings of ITU-T G.997.2.
#pragma once

#include <chip/counter_records.h>
#include <qvr/types.h>

QVR_BEGIN_C

// Subcarriers of a 106 MHz profile (ITU-T G.9701), 51.75 kHz apart.
#define G9701_106a_MAX_NUMBER_OF_SUBCARRIERS 2048U
#define QVR_MAX_NUMBER_OF_TONES G9701_106a_MAX_NUMBER_OF_SUBCARRIERS
#define QVR_K_SUBCARRIER_SPACING_MHZ 0.05175

// Subcarriers from first to last, both included.
typedef struct QVR_band_t {
  uint16_t firstSubCarrier;  // the lowest one
  uint16_t lastSubCarrier;   // the highest one
} QVR_band_t;

#define MAX_NUM_BANDS_IN_MEDLEY_SET 32U  // of a direction

// The subcarriers that carry a direction's signal.
typedef struct QVR_medleyset_t {
  QVR_band_t bands[MAX_NUM_BANDS_IN_MEDLEY_SET];  // as many as numBands says
  uint16_t numBands;                              // bands in use
  uint16_t numSubCarriers;                        // subcarriers of all bands
} QVR_medleyset_t;
#define QVR_K_MEDLEY_SET_SIZE 132U  // bytes in chip memory, fields in the order above

typedef QVR_bool_t QVR_medleySetLUT_t[QVR_MAX_NUMBER_OF_TONES];  // TRUE: the subcarrier is in the set

// Bits that a subcarrier may carry.
#define G9972_BITS_LOWEST 0
#define G9972_BITS_HIGHEST 14

typedef int32_t QVR_BLT_t[QVR_MAX_NUMBER_OF_TONES];  // bits of each subcarrier

typedef float QVR_SNR_t;                                  // dB
typedef QVR_SNR_t QVR_SNRTBL_t[QVR_MAX_NUMBER_OF_TONES];  // dB of each subcarrier
typedef double QVR_FEQ_t[QVR_MAX_NUMBER_OF_TONES];        // amplitude of each subcarrier

// Analogue front end.
typedef struct QVR_AFE_PARAMS_t {
  double rxGain;      // dB
  uint32_t aceOnOff;  // 1: the analogue canceller of echo is on
} QVR_AFE_PARAMS_t;

// The subcarriers that the chip processes.
typedef struct QVR_linePhyParams_t {
  uint32_t firstTone;          // first processed subcarrier
  uint32_t numProcessedTones;  // how many follow from there
} QVR_linePhyParams_t;

typedef uint8_t G9972_BITSps_t[QVR_MAX_NUMBER_OF_TONES];  // bits of each subcarrier

// SNR in dB = value / 2 - 32.
typedef uint8_t G9972_SNRps_t[QVR_MAX_NUMBER_OF_TONES];
#define G9972_SNR_NO_VALUE 255U

// Active line noise in dBm/Hz = -33 - value / 2.
typedef uint8_t G9972_ALNps_t[QVR_MAX_NUMBER_OF_TONES];
#define G9972_ALN_NO_VALUE 255U

// Magnitude of the channel in dB = 6 - value / 10.
typedef int16_t G9972_HLOGps_t[QVR_MAX_NUMBER_OF_TONES];
#define G9972_HLOG_NO_VALUE 1023

typedef int16_t G9972_SATN_t;  // signal attenuation, 0.1 dB

// Vectoring coefficients between the lines of a cable.
#define COEF_NUM_USERS 16U
// One part of the coefficients: row the line that is disturbed, column the line that disturbs it.
typedef struct QVR_realMatrix_t {
  double matrix[COEF_NUM_USERS][COEF_NUM_USERS];  // [row][column]
} QVR_realMatrix_t;
// Of one pair of subcarriers.
typedef struct QVR_tonePairMatrix_t {
  QVR_realMatrix_t coefficients_re;  // real parts
  QVR_realMatrix_t coefficients_im;  // imaginary parts
} QVR_tonePairMatrix_t;
typedef QVR_tonePairMatrix_t* QVR_cancelerMatrix_t;  // one element a pair of subcarriers

// ---- Tables ----

// Every table is read of a line in showtime, and begins by asking the device whether the line is up and how
// it is framed now:
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device (bit loading only; the others say QVR_E_ERROR)
//   QVR_E_ERROR               the line is not up, or its medley set cannot be: 32 bands or more, or a
//                             subcarrier past 2047
//   otherwise as the read that failed
// Whatever a chip says of them, subcarriers past 2047 are neither asked for nor filled. Outputs are untouched
// on failure, unless said otherwise.

// First processed subcarrier and their number, read anew, of a line in any state. They are what the chip
// says, also where that leads past subcarrier 2047.
//   as QVR_readGfastFramerInitCounters
QVR_retval_t QVR_getLinePhyParams(QVR_lineId_t xi_lineId, QVR_linePhyParams_t* xo_params);

// The subcarriers on which the line's chip sends (TRUE) or receives, whatever the line's state.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   QVR_E_ERROR               32 bands or more, or a subcarrier past 2047; the record is filled all the same
//   otherwise as QVR_readmem
QVR_retval_t QVR_getMedleySet(QVR_lineId_t xi_lineId, QVR_bool_t xi_isTx, QVR_medleyset_t* xo_set);

// Bits of each subcarrier that the chip sends or receives, of data and of RMC symbols; 0 on a pilot. Of the
// data tables a failed read of the loading itself is no failure: the table is then left as it was.
//   QVR_E_ERROR  also: the RMC tables were replaced during each of 50 readings
QVR_retval_t QVR_readTxBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);
QVR_retval_t QVR_readRxBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);
QVR_retval_t QVR_readTxRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);
QVR_retval_t QVR_readRxRMCBitLoadingTable(QVR_lineId_t xi_lineId, QVR_BLT_t xo_bits);

// SNR in dB: at the near end from the first processed subcarrier on, at the far end from its lowest medley
// subcarrier on. Entries past the last are left as they were. A subcarrier without any noise has an infinite
// SNR; one that was not measured, or that the far end has no value for, is not-a-number.
//
// The far end is asked for 248 subcarriers at a time. A block that does not come is asked for ten times in
// all; of those that came before a failure, the entries are filled.
//   QVR_E_ERROR            also: a guard word did not settle within 50 readings, or an energy was not read
//   QVR_E_FAREND_EOC_NACK  the far end refuses
//   QVR_E_FAILED_GETTING_FE_DATA  the last response was not a block of the length asked for
//   QVR_E_LINE_NOT_ACTIVE, QVR_E_FAILED_SENDING_FAR_END_MSG  as QVR_sendMsgToFarEnd, at the last time
QVR_retval_t QVR_readSNRTable(QVR_lineId_t xi_lineId, QVR_SNRTBL_t xo_snr);
QVR_retval_t QVR_readFarEndSNRTable(QVR_lineId_t xi_lineId, QVR_SNRTBL_t xo_snr);

// Receive level in dBm/Hz from the first processed subcarrier on, as the equaliser has it and calibrated for
// the receive path. Each output may be NULL.
//   as QVR_readmem, or as QVR_readmemFarEnd
QVR_retval_t QVR_readRxSignal(QVR_lineId_t xi_lineId, double* xo_feq, double* xo_calibrated,
                              QVR_AFE_PARAMS_t* xo_afe);
QVR_retval_t QVR_readFarEndRxSignal(QVR_lineId_t xi_lineId, double* xo_feq, double* xo_calibrated,
                                    QVR_AFE_PARAMS_t* xo_afe);

// Level handed to the line driver in dBm/Hz (not-a-number where nothing is sent), and the amplitude of each
// subcarrier before the inverse transform (0 there), from the first processed subcarrier on.
//   as QVR_readmem, or as QVR_readmemFarEnd
QVR_retval_t QVR_readTxSignal(QVR_lineId_t xi_lineId, double* xo_level);
QVR_retval_t QVR_readFarEndTxSignal(QVR_lineId_t xi_lineId, double* xo_level);
QVR_retval_t QVR_readTxFEQ(QVR_lineId_t xi_lineId, QVR_FEQ_t xo_feq);
QVR_retval_t QVR_readFarEndTxFEQ(QVR_lineId_t xi_lineId, QVR_FEQ_t xo_feq);

// Test parameters by subcarrier in the encodings of ITU-T G.997.2, upstream and downstream in the
// network's terms, one entry a subcarrier from 0 on; each direction is measured at the end that receives it.
// SNR, noise and HLOG are rounded to whole decibels. A value beyond its encoding is the nearest it can hold;
// what is no number, was not measured or lies outside the medley set is its encoding's "no value".
//   as the tables they are made of
QVR_retval_t QVR_getLineStatusBITSpsds(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusBITSpsus(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusBITSRMCpsds(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusBITSRMCpsus(QVR_lineId_t xi_lineId, G9972_BITSps_t xo_bits);
QVR_retval_t QVR_getLineStatusSNRpsds(QVR_lineId_t xi_lineId, G9972_SNRps_t xo_snr);
QVR_retval_t QVR_getLineStatusSNRpsus(QVR_lineId_t xi_lineId, G9972_SNRps_t xo_snr);
QVR_retval_t QVR_getLineStatusALNpsds(QVR_lineId_t xi_lineId, G9972_ALNps_t xo_noise);
QVR_retval_t QVR_getLineStatusALNpsus(QVR_lineId_t xi_lineId, G9972_ALNps_t xo_noise);

// The channel's magnitude by subcarrier, likewise. These say in the trace log, as errors, which reading
// failed.
//   as QVR_readTxSignal and QVR_readRxSignal, or those of the far end, then as QVR_getMedleySet
QVR_retval_t QVR_getLineStatusHLOGpsds(QVR_lineId_t xi_lineId, G9972_HLOGps_t xo_hlog);
QVR_retval_t QVR_getLineStatusHLOGpsus(QVR_lineId_t xi_lineId, G9972_HLOGps_t xo_hlog);

// Signal attenuation, 0.1 dB: the power sent over the power received, weighted by what the far end sends on
// each subcarrier, for both directions.
//   QVR_E_DATA_NOT_AVAILABLE  there is no subcarrier with an HLOG on which the far end sends
//   otherwise as the HLOG, then as QVR_readFarEndTxFEQ
QVR_retval_t QVR_getSignalAttenuationds(QVR_lineId_t xi_lineId, G9972_SATN_t* xo_attenuation);
QVR_retval_t QVR_getSignalAttenuationus(QVR_lineId_t xi_lineId, G9972_SATN_t* xo_attenuation);

// HLOG from levels sent and received, dBm/Hz, both from the first processed subcarrier on as the line was
// last found to be framed; only the medley set is read.
//   as QVR_getMedleySet
QVR_retval_t QVR_getLineStatusHLOGps(QVR_lineId_t xi_lineId, const double* xi_sent, const double* xi_received,
                                     G9972_HLOGps_t xo_hlog);

// ---- Expected throughput (ITU-T G.9701) ----

// Of one direction from its framing, kbit/s, single precision. A field of zero that divides gives infinity or
// not-a-number. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_calcTxETR(ETR_DB_S xi_framing, float* xo_etr);
QVR_retval_t QVR_calcRxETR(ETR_DB_S xi_framing, float* xo_etr);
QVR_retval_t QVR_calcTxRawPhyRate(ETR_DB_S xi_framing, float* xo_rate);
QVR_retval_t QVR_calcRxRawPhyRate(ETR_DB_S xi_framing, float* xo_rate);

// Both directions of a line in showtime, kbit/s; the raw rates may be NULL. At the subscriber side the
// downstream raw rate is computed from what the ETR database has for the transmitter; every other figure from
// the byte counts that the framer has now. Nothing is filled on failure.
//   QVR_E_ERROR  the line is not up
//   otherwise as QVR_readGfastETRdbCounters and QVR_readGfastFramerRawCounters
QVR_retval_t QVR_calcETRsForLine(QVR_lineId_t xi_lineId, float* xo_etrDs, float* xo_etrUs,
                                 float* xo_rawRateDs, float* xo_rawRateUs);

// ---- Vectoring matrices and the analogue front end ----

// Bytes of a coefficient area, as signed 16-bit values in host order; half a value at the end is left out. On
// failure the values already read stay in the buffer.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   QVR_E_ERROR               16 blocks in a row could not be read or were being written
QVR_retval_t QVR_readVectMatrix(QVR_lineId_t xi_lineId, uint32_t xi_address, int16_t* xo_values,
                                uint32_t xi_sizeInBytes);

// Coefficients by pair of subcarriers: a line's pairs begin at element xi_tonePairs * line, so the array
// holds xi_tonePairs elements for each line up to the one asked for. A line's are untouched on failure. A
// chip has QVR_K_MAX_TONE_PAIRS of them; what is read beyond is another area's.
//   as QVR_readVectMatrix
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY  no room to read them
//   QVR_E_ERROR  of all lines: whatever failed first
QVR_retval_t QVR_readCancelerMatrixForLine(QVR_lineId_t xi_lineId, uint16_t xi_tonePairs,
                                           QVR_tonePairMatrix_t* xo_matrices);
QVR_retval_t QVR_readCancelerMatrixForAllLines(uint16_t xi_tonePairs, QVR_tonePairMatrix_t* xo_matrices);
QVR_retval_t QVR_readPrecoderMatrixForLine(QVR_lineId_t xi_lineId, uint16_t xi_tonePairs,
                                           QVR_tonePairMatrix_t* xo_matrices);
QVR_retval_t QVR_readPrecoderMatrixForAllLines(uint16_t xi_tonePairs, QVR_tonePairMatrix_t* xo_matrices);

// Receive gain and mode of the front end at either end of a line in showtime. Untouched on failure.
//   QVR_E_ERROR  the line is not up
//   otherwise as QVR_getLinePhyParams, then as QVR_readmem or QVR_readmemFarEnd
QVR_retval_t QVR_getAfeParams(QVR_lineId_t xi_lineId, QVR_AFE_PARAMS_t* xo_afe);
QVR_retval_t QVR_getFarEndAfeParams(QVR_lineId_t xi_lineId, QVR_AFE_PARAMS_t* xo_afe);

QVR_END_C
