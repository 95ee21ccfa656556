// How a line is, what each direction of it carries, and who is at its ends (ITU-T G.997.2).
#pragma once

#include <chip/init_failure_causes.h>
#include <qvr/types.h>

QVR_BEGIN_C

typedef uint8_t G9972_initLastSignal_t;  // number of a signal of the initialisation (ITU-T G.997.2)
typedef uint32_t G9972_DataRate_t;       // kbit/s
typedef uint32_t QVR_wireLength_t;       // a plain number, see EWL

// Power state of the link (ITU-T G.997.2).
QVR_ENUM(G9972_LINK_STATE_t){G9972_LINK_STATE_L0N = 0, G9972_LINK_STATE_L21N = 1, G9972_LINK_STATE_L21B = 2,
                             G9972_LINK_STATE_L22B = 3, G9972_LINK_STATE_L3 = 4};

// What a margin or a power shows that is not available.
#define QVR_K_LEVEL_NOT_AVAILABLE (-512)

// How a line is (ITU-T G.997.2).
typedef struct QVR_lineStatus_t {
  G9972_initSuccessFailureCause_t INITSFCAUSE;  // how the last initialisation ended
  G9972_initLastSignal_t INITLASTSIGNALds;      // last signal of the initialisation sent downstream
  G9972_initLastSignal_t INITLASTSIGNALus;
  G9972_LINK_STATE_t LINK_STATE;  // power state
  int16_t SNRMds;                 // noise margin, 0.1 dB
  int16_t SNRMus;
  uint16_t UPBOKLE;    // estimated electrical length, 0.1 dB
  uint16_t UPBOKLE_R;  // the same as the far end estimates it
  int16_t ACTATPds;    // actual aggregate transmit power, 0.1 dBm
  int16_t ACTATPus;
  int16_t SNRM_RMCds;  // noise margin of the RMC, 0.1 dB
  int16_t SNRM_RMCus;
  QVR_wireLength_t EWL;   // estimated wire length: 256 without time gap correction, a plain number
  uint8_t DTAMds;         // downstream symbols under dynamic time assignment at present
  uint32_t DTAMdsEVTCNT;  // exchanges of that number
} QVR_lineStatus_t;

// One direction.
typedef struct QVR_channelStatus_t {
  G9972_DataRate_t NDR;     // net data rate
  G9972_DataRate_t ATTNDR;  // attainable net data rate
  G9972_DataRate_t ETR;     // expected throughput
  G9972_DataRate_t GDR;     // gamma data rate
  uint8_t DTU_NFEC;         // Reed-Solomon codeword size, bytes
  uint8_t DTU_RFEC;         // redundancy of a codeword, bytes
  uint8_t DTU_Q;            // codewords a data transfer unit
} QVR_channelStatus_t;

// One end (ITU-T G.997.2). Bytes as the equipment gives them: texts end at their first zero byte or fill the
// field.
typedef struct QVR_inventoryParameters_t {
  char GHS_VENDOR[8];     // ITU-T G.994.1 vendor id
  char VERSION[16];       // version of the equipment
  char SYSTEM_VENDOR[8];  // who made the equipment
  char SERIALNR[32];      // serial number of the equipment
} QVR_inventoryParameters_t;

// Both ends of a line.
typedef struct QVR_inventoryObject_t {
  QVR_inventoryParameters_t FTU_O;  // network end
  QVR_inventoryParameters_t FTU_R;  // subscriber end
} QVR_inventoryObject_t;

// How the line is, by its device's record as last read and by what the chip and, in showtime, the far end
// measure at present. SNRMds, SNRMus and ACTATPus that are not available are QVR_K_LEVEL_NOT_AVAILABLE; any
// other field whose source cannot be read keeps what it held, but for EWL, which is then that of no time gap
// correction.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device; nothing is filled
//   otherwise as QVR_readGfastFduRawCounters, the last read made: an earlier one that failed is not reported
QVR_retval_t QVR_getLineStatus(QVR_lineId_t xi_lineId, QVR_lineStatus_t* xo_status);

// How the line's last initialisation went, read anew from the device. Nothing is filled on failure.
//   QVR_E_NO_DEVICE_FOR_LINE       the line has no device
//   QVR_E_NOT_CURRENTLY_SUPPORTED  the line's device is at the subscriber side
//   otherwise as QVR_getDeviceInfo
QVR_retval_t QVR_getLineStatusInitialization(QVR_lineId_t xi_lineId,
                                             G9972_initSuccessFailureCause_t* xo_cause,
                                             G9972_initLastSignal_t* xo_lastSignalDs,
                                             G9972_initLastSignal_t* xo_lastSignalUs);

// What the line carries upstream and downstream, in the network's terms. The direction that the device
// transmits needs the far end, and so a line in showtime.
//   as QVR_readGfastDerivedCounters or QVR_readFarEndPMDTestParameters, the first read that failed: the DTU
//   fields are not filled then, nor are the rates unless only the framing could not be read
QVR_retval_t QVR_getChannelStatusus(QVR_lineId_t xi_lineId, QVR_channelStatus_t* xo_status);
QVR_retval_t QVR_getChannelStatusds(QVR_lineId_t xi_lineId, QVR_channelStatus_t* xo_status);

// Who is at both ends: the local end from its own record, the far end from what it last answered (network
// side) or from a new exchange (subscriber side, where the network end's G.hs vendor is the one of the local
// record). The far end's version of the form "number.number.number text" is written anew so that it ends
// within its field; numbers are 0 to 255, and a text of any other form is taken as it is.
//   QVR_E_NO_DEVICE_FOR_LINE  the line has no device
//   as QVR_readmem (nothing is filled in these two cases), or as QVR_getInventoryFarEnd (FTU_R is filled)
QVR_retval_t QVR_getInventory(QVR_lineId_t xi_lineId, QVR_inventoryObject_t* xo_inventory);

// Who is at the far end, asked anew. Its G.hs vendor is not reported. At the network side a version of the
// form "number.number.number text" is given a fourth number, 0. Nothing is filled on failure.
//   QVR_E_NO_DEVICE_FOR_LINE          the line has no device
//   QVR_E_FAILED_SENDING_FAR_END_MSG  no exchange, or a response shorter than the record
QVR_retval_t QVR_getInventoryFarEnd(QVR_lineId_t xi_lineId, QVR_inventoryParameters_t* xo_inventory);

// Writes SYSTEM_VENDOR and SERIALNR into the device's inventory, bytes as they are; the other fields are not
// used. What the inventory holds beside them is read first and written back.
//   as QVR_readmem and QVR_writemem, of the last access made
QVR_retval_t QVR_setInventoryParams(QVR_deviceId_t xi_deviceId,
                                    const QVR_inventoryParameters_t* xi_inventory);

QVR_END_C
