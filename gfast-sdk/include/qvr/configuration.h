// The configuration of a line, in profiles after the line configuration objects of ITU-T G.997.2. Field names
// end in the direction: ds downstream, us upstream.
#pragma once

#include <qvr/parameters.h>
#include <qvr/types.h>

QVR_BEGIN_C

// Symbols a TDD frame.
QVR_ENUM(G9972_MF_t){MF_23 = 23, MF_36 = 36};

// Rate of repetitive electrical impulse noise (REIN).
QVR_ENUM(G9972_IAT_REIN_t){
    IAT_REIN_100Hz = 0,
    IAT_REIN_120Hz = 1,
    IAT_REIN_300Hz = 2,
    IAT_REIN_360Hz = 3,
};

// How the ends of a line agree on the split of a TDD frame (dynamic time assignment).
QVR_ENUM(QVR_DTA_MODE_t){DTA_mode_independent = 0, DTA_mode_collective = 1};

#define QVR_K_MAX_SUBCARRIER_RANGES 16  // of a mask or of RFI bands
#define QVR_K_MAX_PSD_BREAKPOINTS 16    // of a PSD mask

// Subcarriers from start to stop, both included; both 0: none.
typedef struct G9972_subCarrierIdxRange_t {
  uint16_t startSubcarrierIdx;  // the lowest one
  uint16_t stopSubcarrierIdx;   // the highest one
} G9972_subCarrierIdxRange_t;

// A breakpoint of a PSD mask.
typedef struct G9972_PSDMASKdescriptor_t {
  uint16_t subCarrierIndex;  // where it is
  uint8_t PSDlevel;          // level there
} G9972_PSDMASKdescriptor_t;

// How time is divided.
typedef struct QVR_TDDProfile_t {
  G9972_MF_t MF;  // symbols a TDD frame
  uint8_t Mds;    // downstream symbols a TDD frame
  uint8_t CE;     // cyclic extension, N/64 samples
} QVR_TDDProfile_t;

// How much power may be sent, and where.
typedef struct QVR_lineSpectrumProfile_t {
  int16_t MAXATPds;  // maximum aggregate transmit power, 0.1 dBm
  int16_t MAXATPus;
  G9972_subCarrierIdxRange_t CARMASKds[QVR_K_MAX_SUBCARRIER_RANGES];  // masked subcarriers
  G9972_subCarrierIdxRange_t CARMASKus[QVR_K_MAX_SUBCARRIER_RANGES];
  G9972_PSDMASKdescriptor_t PSDMASKds[QVR_K_MAX_PSD_BREAKPOINTS];  // highest power spectral density
  G9972_PSDMASKdescriptor_t PSDMASKus[QVR_K_MAX_PSD_BREAKPOINTS];
} QVR_lineSpectrumProfile_t;

// Where nothing may be sent, for the sake of radio.
typedef struct QVR_rfiProfile_t {
  G9972_subCarrierIdxRange_t RFIBANDS[QVR_K_MAX_SUBCARRIER_RANGES];  // bands that are left out
  uint32_t IARBANDS;  // bit mask of international amateur radio bands
} QVR_rfiProfile_t;

// Upstream power back-off.
typedef struct QVR_upboProfile_t {
  uint16_t UPBOPSDA;   // 0.01 dBm/Hz
  uint16_t UPBOPSDB;   // 0.01 dBm/Hz
  uint16_t UPBOKL;     // 0.1 dB
  QVR_bool_t UPBOKLF;  // UPBOKL is forced
  uint16_t UPBOKLREF;  // 0.1 dB
} QVR_upboProfile_t;

// Noise margins, and when the rate follows them.
typedef struct QVR_noiseMarginProfile_t {
  // Margins in 0.1 dB, times in seconds.
  int16_t TARSNRMds;
  int16_t TARSNRMus;
  int16_t MAXSNRMus;  // there is none downstream
  int16_t MINSNRMds;
  int16_t MINSNRMus;
  int16_t SRA_USNRMds;
  int16_t SRA_USNRMus;
  uint16_t SRA_UTIMEds;
  uint16_t SRA_UTIMEus;
  int16_t SRA_DSNRMus;  // upstream first, unlike its neighbours
  int16_t SRA_DSNRMds;
  uint16_t SRA_DTIMEds;
  uint16_t SRA_DTIMEus;
  int16_t TARSNRM_RMCds;
  int16_t TARSNRM_RMCus;
  uint8_t MAXBL_RMCds;  // bits
  uint8_t MAXBL_RMCus;
  int16_t MINSNRM_RMCds;
  int16_t MINSNRM_RMCus;
} QVR_noiseMarginProfile_t;

// When a line adapts its rate fast (FRA).
typedef struct QVR_fastRateAdaptationProfile_t {
  uint8_t FRA_TIMEds;  // logical frames
  uint8_t FRA_TIMEus;
  uint8_t FRA_NTONESds;  // percent
  uint8_t FRA_NTONESus;
  uint16_t FRA_RTXUCds;  // anomalies
  uint16_t FRA_RTXUCus;
  QVR_bool_t FRA_VENDISCds;  // the vendor's own criteria count, too
  QVR_bool_t FRA_VENDISCus;
} QVR_fastRateAdaptationProfile_t;

// When a line gives up and initialises again.
typedef struct QVR_reinitPolicyProfile_t {
  // For how long signal, margin or RMC are lost first: 0.1 s.
  uint8_t LOS_PERSISTENCYds;
  uint8_t LOS_PERSISTENCYus;
  uint8_t LOM_PERSISTENCYds;
  uint8_t LOM_PERSISTENCYus;
  uint8_t LOR_PERSISTENCYds;
  uint8_t LOR_PERSISTENCYus;
  // For how long errors or a low throughput go on first: s.
  uint8_t REINIT_TIME_THRESHOLDds;
  uint8_t REINIT_TIME_THRESHOLDus;
  uint8_t LOW_ETR_THRESHOLDds;
  uint8_t LOW_ETR_THRESHOLDus;
} QVR_reinitPolicyProfile_t;

// Protection against impulses.
typedef struct QVR_retransmissionProfile_t {
  uint8_t RNRATIOds;  // RFEC / NFEC, 1/32
  uint8_t RNRATIOus;
  uint16_t INPMIN_SHINEds;  // symbol periods
  uint16_t INPMIN_SHINEus;
  uint8_t INPMIN_REINds;  // symbol periods
  uint8_t INPMIN_REINus;
  G9972_IAT_REIN_t IAT_REINds;  // read from a line: the rate in Hz, not the enumeration
  G9972_IAT_REIN_t IAT_REINus;
  uint8_t SHINERATIOds;  // 0.001
  uint8_t SHINERATIOus;
  uint32_t DELAYMAXds;  // 0.25 ms
  uint32_t DELAYMAXus;
  QVR_bool_t RTX_TESTMODEds;  // retransmission is tested
  QVR_bool_t RTX_TESTMODEus;
} QVR_retransmissionProfile_t;

// Cancellation of crosstalk.
typedef struct QVR_vectoringProfile_t {
  // It may be used. Upstream first.
  QVR_bool_t FEXT_CANCEL_ENABLEus;
  QVR_bool_t FEXT_CANCEL_ENABLEds;
} QVR_vectoringProfile_t;

// Seamless rate adaptation.
typedef struct QVR_sraProfile_t {
  QVR_bool_t SRA_ENABLEds;  // it may be used
  QVR_bool_t SRA_ENABLEus;
} QVR_sraProfile_t;

// Limits of rates and of bits a subcarrier.
typedef struct QVR_dataRateProfile_t {
  // kbit/s
  uint32_t MAXNDRds;
  uint32_t MAXNDRus;
  uint32_t MINETRds;
  uint32_t MINETRus;
  uint32_t MAXGDRds;
  uint32_t MAXGDRus;
  uint32_t MINGDRds;
  uint32_t MINGDRus;
  uint8_t BLUPPERLIMITds;  // bits
  uint8_t BLUPPERLIMITus;
} QVR_dataRateProfile_t;

// Test modes of the data path.
typedef struct QVR_dataPathConfigProfile_t {
  // TRUE: the mode is on.
  QVR_bool_t TPS_TESTMODE;
  QVR_bool_t DRA_TESTMODE;
} QVR_dataPathConfigProfile_t;

// The analogue canceller of echo.
typedef struct QVR_AceConfigProfile_t {
  // 0 or 1
  uint32_t ACEMODE;
  uint32_t ACEP2N2;
  uint32_t ALLOWACEON;
} QVR_AceConfigProfile_t;

// Dynamic time assignment.
typedef struct QVR_DTAProfile_t {
  QVR_DTA_MODE_t DTA_MODE;  // how the ends agree
  // Downstream symbols a TDD frame.
  uint8_t MINMds;
  uint8_t MAXMds;
  uint8_t cDTA_MAXMds;
  uint8_t cDTA_MINMds;
  uint32_t DTA_REPORTING_WIN;  // reporting window
  QVR_bool_t cDTA_ENABLE;      // coordinated assignment may be used
} QVR_DTAProfile_t;

// The whole configuration of a line.
typedef struct QVR_lineConfig_t {
  // One profile each.
  QVR_TDDProfile_t tddProfile;
  QVR_lineSpectrumProfile_t lineSpectrumProfile;
  QVR_rfiProfile_t rfiProfile;
  QVR_upboProfile_t upboProfile;
  QVR_noiseMarginProfile_t noiseMarginProfile;
  QVR_fastRateAdaptationProfile_t fastRateAdaptationProfile;
  QVR_reinitPolicyProfile_t reinitPolicyProfile;
  QVR_retransmissionProfile_t retransmissionProfile;
  QVR_vectoringProfile_t vectoringProfile;
  QVR_sraProfile_t sraProfile;
  QVR_dataRateProfile_t dataRateProfile;
  QVR_dataPathConfigProfile_t dataPathConfigProfile;
  QVR_AceConfigProfile_t aceConfigProfile;
  QVR_DTAProfile_t dtaProfile;
} QVR_lineConfig_t;

// Reads the configuration of a line from the chip's parameters: MF, Mds, CE, RFIBANDS, IARBANDS, TARSNRM,
// FEXT_CANCEL_ENABLE, SRA_ENABLE, INPMIN_REIN, IAT_REIN (the rate in Hz), SHINERATIO and BLUPPERLIMIT. All
// other fields stay as they were. A parameter that cannot be read is named in a warning, and its field gets
// the value that the library read last; one that the dictionary does not have leaves its field as it was, but
// for RFIBANDS, which is then empty.
//   as QVR_loadConfigParams
QVR_retval_t QVR_getLineConfig(QVR_lineId_t xi_lineId, QVR_lineConfig_t* xo_config);

// Reads the configuration of the line; the chip takes none of it back, so nothing is written.
//   as QVR_getLineConfig
QVR_retval_t QVR_setLineConfig(QVR_lineId_t xi_lineId, const QVR_lineConfig_t* xi_config);

// Keeps state and configuration of every line as they are now, up to the first that cannot be read.
//   as QVR_getLineConfig
QVR_retval_t QVR_saveLineConfigState(void);

// Do nothing. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_restoreSystemConfigState(void);
QVR_retval_t QVR_restoreLineConfigState(void);

QVR_END_C
